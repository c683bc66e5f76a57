// Document files (".TS1"): a whole set of dialog values saved as text, one line
// per control. Front ends describe their controls through DocumentControl and
// DocumentTarget; this file owns the one line format, the hexadecimal form of
// binary values and the file framing. A damaged or unreadable file changes no
// control, and a failed save leaves the previous file as it was.
//
// Sections: tags · line codec · hexadecimal form · controls and targets ·
// documents.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "base/alloc.h"
#include "base/byte_sink.h"
#include "base/report.h"

namespace tess {

// ---------------------------------------------------------------- tags

// Every control line starts with its control kind's tag of six capitals.
inline constexpr size_t kDocumentTagLength = 6;
inline constexpr std::string_view kTagColourButton = "CLRBTN";  // unsigned decimal colour
inline constexpr std::string_view kTagSpin = "SPNBTN";          // number, clamped to its spin
inline constexpr std::string_view kTagSignedSpin = "SPNSGN";    // as SPNBTN, bound to text
inline constexpr std::string_view kTagCheckBox = "CHKBOX";      // 1 when checked, else 0
inline constexpr std::string_view kTagTextField = "TXTFLD";     // the field's text
inline constexpr std::string_view kTagComboBox = "CMBBOX";      // selected index, -1 for none
inline constexpr std::string_view kTagFontBox = "FNTBOX";       // font face name
inline constexpr std::string_view kTagFillButton = "FILLBT";    // hexadecimal fill record
inline constexpr std::string_view kTagMatrixButton = "MTRXBT";  // hexadecimal matrix record
inline constexpr std::string_view kTagFountain = "FOUNTN";      // hexadecimal fountain record

// ---------------------------------------------------------------- line codec

// Longest line a reader takes, line end excluded; see LoadDocument.
inline constexpr size_t kDocumentLineMax = 8191;
// A text field saves at most this many characters of its text.
inline constexpr size_t kTextFieldValueMax = 1023;

// Tag, control number in decimal, "=", value, with no spaces. The value is cut
// at its first CR or LF so that a control always stays one line.
std::string FormatControlLine(std::string_view tag, int number, std::string_view value);

// The value texts of the line kinds: "%lu" for colour buttons, "%d" for
// spins, check boxes and lists, the text itself for text fields (at most
// kTextFieldValueMax characters) and font boxes.
std::string UnsignedValueText(uint32_t value);
std::string NumberValueText(int32_t value);
std::string_view TextFieldValueText(std::string_view text);

// The line up to its first LF and its first CR (and its first zero byte, as a
// zero-terminated line would end there).
std::string_view CutLineEnd(std::string_view line);

// The decimal integer right after the tag (an optional sign, then digits); 0
// when there is none, it does not fit an int, or the line is shorter than a
// tag. Lines are delivered only for numbers above 0.
int DocumentLineNumber(std::string_view line);

// What a control with tag `tag` takes from `line`: the text after the first
// "=" and every "=" and space that follows it. Nothing when the line's first
// six characters are not the tag or the line has no "=".
std::optional<std::string_view> LineValue(std::string_view line, std::string_view tag);

// A value text as the number an edit field or list would read from it:
// leading spaces, an optional sign, digits up to the first non-digit; 0
// without digits. Saturates far outside the 32-bit range, so clamping it to a
// spin range is always right.
int64_t ParseValueNumber(std::string_view value);

// ---------------------------------------------------------------- hexadecimal form

// Each byte as two upper-case hexadecimal digits, in order, no separators;
// an empty block gives an empty text.
std::string HexEncode(std::span<const uint8_t> bytes);

// `size` + 1 zeroed bytes filled from the first 2 * `size` digits of `text`
// (either case); digits beyond those are ignored. Null when a non-digit comes
// before `size` bytes are filled, or when memory is short: the control then
// keeps its previous value.
Buffer<uint8_t> HexDecode(std::string_view text, size_t size);

// ---------------------------------------------------------------- controls and targets

// One control that takes part in documents. The Windows dialog implements it
// over a window (messages 1334 and 1335), the settings-backed target over a
// setting.
class DocumentControl {
 public:
  virtual ~DocumentControl() = default;
  virtual std::string_view Tag() const = 0;
  virtual int Number() const = 0;
  // The value as the control's line carries it.
  virtual std::string ValueText() const = 0;
  // Takes a value text from a line with this control's tag. False when the
  // value cannot be taken (the control keeps its previous value).
  virtual bool TakeValue(std::string_view value) = 0;
  // An older tag whose lines the control also takes (empty: none), and how it
  // takes their value.
  virtual std::string_view LegacyTag() const { return {}; }
  virtual bool TakeLegacyValue(std::string_view) { return false; }
};

// The control's whole line, line end excluded.
std::string FormatControlLine(const DocumentControl& control);

// Offers `line` to `control`: refused (false, nothing changed) when its tag is
// neither the control's own nor its legacy tag, or it has no "="; else the
// control's TakeValue (or TakeLegacyValue).
bool DeliverLine(DocumentControl& control, std::string_view line);

// Everything that can be saved to and loaded from a document.
class DocumentTarget {
 public:
  virtual ~DocumentTarget() = default;
  // Every control that takes part, in save order.
  virtual void ForEachControl(const std::function<void(const DocumentControl&)>& visit) const = 0;
  // The control that takes lines numbered `number`, or null.
  virtual DocumentControl* FindControl(int number) = 0;
  // After a load that was not refused, so dependent state can catch up (the
  // dialog shows the selected page and redraws its sample).
  virtual void DocumentLoaded() {}
};

// ---------------------------------------------------------------- documents

inline constexpr std::string_view kDocumentHeader =
    ";This is a document created by Tessarine #1 Plugin by Brindlewood - do not edit.";
inline constexpr std::string_view kDocumentStart = ";Start of document";
inline constexpr std::string_view kDocumentEnd = ";End of document";
inline constexpr std::string_view kDocumentLineEnd = "\r\n";

// Header, start line, one line per control in the target's order, end line;
// every line ends with CR LF whatever the platform. False when the sink failed.
bool WriteDocument(ByteSink& sink, const DocumentTarget& target);

enum class DocumentStatus { kLoaded, kDamaged };

// Takes a document's whole text into `target`. The first line must name both
// "Tessarine #1 Plugin" and "Brindlewood"; otherwise nothing is delivered and
// the result is kDamaged. An empty text loads nothing and is not damaged.
// Lines end with LF or CR LF; lines beginning with ";" are skipped; each other
// line goes to the control with its number, when there is one. A line longer
// than kDocumentLineMax characters is cut there and the rest of it dropped,
// so no part of a long value can pose as a line of its own.
DocumentStatus ReadDocument(std::string_view text, DocumentTarget& target);

// Writes a temporary file beside `path` and renames it into place. On any
// failure reports "There has been an error creating the requested file.",
// leaves the previous file as it was and returns false.
bool SaveDocument(const std::string& path, const DocumentTarget& target, Reporter& reporter);

// Reads the whole file first, so a read failure or a damaged file changes no
// control. Reports "There has been an error opening the requested file." when
// it cannot be read or memory is short (should a control run short while
// taking its value, the lines before it stay taken), and "This file has been
// damaged." for a bad first line. True only when the file was loaded; then
// the target's DocumentLoaded has been called.
bool LoadDocument(const std::string& path, DocumentTarget& target, Reporter& reporter);

}  // namespace tess
