// The "Preview" files: "preview.html", a page that tiles the animation as its
// background, and "preview.gif", the animation itself. Both are fixed byte for
// byte, whatever the platform: the page has CR LF line ends and no final line
// break; the GIF has a global table only, loops forever, and every frame
// carries a graphic control block whose flags keep the product's old rule.
// PreviewGif writes to any sink (tests use memory); PreviewWriter owns the
// files. Opening the page in a browser is the build driver's job.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/byte_sink.h"
#include "image/image.h"
#include "output/gif_writer.h"
#include "platform/safe_file.h"

namespace tess {

inline constexpr char kPreviewHtmlName[] = "preview.html";
inline constexpr char kPreviewGifName[] = "preview.gif";

// The whole page, CR LF line ends included.
std::string_view PreviewHtmlText();

// The graphic control flags byte of a preview frame: the transparent index's
// low byte when there is one, OR 8 when transparent_background is exactly 1.
// Deliberately not the conventional layout: 8 selects "restore to background",
// and an odd index also sets the transparency bit.
uint8_t PreviewControlFlags(int transparent_background, int transparent_index);

// The preview GIF over a sink. Begin, then AddFrame per frame, then Finish.
class PreviewGif {
 public:
  explicit PreviewGif(ByteSink& sink) : m_writer(sink) {}

  // Header with a screen of width x height, global table of the first 2^bits
  // triples of the 768-byte palette, loop forever. bits must be 1..8.
  bool Begin(int width, int height, const uint8_t* rgb_palette, int bits);
  // Graphic control block, descriptor at (left, top) with size bits = the
  // image's bit count - 1 and no local table, then the LZW data. The image must
  // be 1, 4 or 8 bits and lie inside the screen. delay is clamped to 16 bits.
  bool AddFrame(int transparent_background, int left, int top, int transparent_index, int delay,
                const ImageBlock& image);
  // The trailer.
  bool Finish();

 private:
  GifWriter m_writer;
};

// Joins a folder and a file name with `separator`, adding none when the folder
// already ends with it or is empty.
std::string JoinPath(const std::string& folder, std::string_view name, char separator = '/');

// The two preview files in a folder the caller has made. A failed Open means
// "Error creating file"; a failed AddFrame abandons both and means "Error
// writing file". Both are written to temporaries and put in place together
// by Close, the GIF first, so a page never shows a half GIF and a failed run
// leaves the previous preview whole.
class PreviewWriter {
 public:
  PreviewWriter() = default;
  PreviewWriter(const PreviewWriter&) = delete;
  PreviewWriter& operator=(const PreviewWriter&) = delete;

  // Writes "preview.html" completely and the head of "preview.gif", both to
  // temporaries. Returns the full path of "preview.html"; empty on failure.
  std::string Open(const std::string& folder, int width, int height, const uint8_t* rgb_palette,
                   int bits, char separator = '/');
  bool AddFrame(int transparent_background, int left, int top, int transparent_index, int delay,
                const ImageBlock& image);
  // Writes the trailer and puts both files in place. False when it was not
  // open or a byte did not reach a file; error() then says why.
  bool Close();
  bool IsOpen() const { return m_gif.has_value(); }
  // The system's reason for the last failure, empty when there was none.
  const std::string& error() const { return m_error; }

 private:
  void Abandon();

  SafeFile m_html;
  SafeFile m_file;
  std::optional<PreviewGif> m_gif;  // writes into m_file while open
  std::string m_error;
};

}  // namespace tess
