// Every lasting setting of the plug-in: one fixed table of key descriptors (its
// order is the order of the lines in the configuration file) and a Settings
// object holding one value per descriptor. Number and switch values are 32-bit
// integers; text values hold at most 260 characters and never a zero byte.
// Nothing here clamps values: the dialog and the styles limit them where used.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace tess {

// Kind flags of a descriptor. kKindDither rides along with kKindNumber on the
// two dither adjustments and changes nothing in reading or writing.
enum : uint8_t {
  kKindSwitch = 1,
  kKindText = 2,
  kKindNumber = 4,
  kKindDither = 16,
};

// File flags. kFileDialogItem marks keys the main dialog treats specially; the
// file code ignores it.
enum : uint8_t {
  kFileWrittenOnly = 1,
  kFileDialogItem = 128,
};

struct ConfigKey {
  std::string_view name;
  uint8_t kind = 0;
  uint8_t file_flags = 0;
  int32_t item = 0;  // 100..103 for the four dialog items, else 0
  int32_t default_number = 0;
  std::string_view default_text;

  constexpr bool IsText() const { return (kind & kKindText) != 0; }
  constexpr bool IsWrittenOnly() const { return (file_flags & kFileWrittenOnly) != 0; }
};

constexpr int kConfigKeyCount = 303;
constexpr int kStyleKeyCount = 276;
// Style numbers 000..019 that own keys; the style table has one entry for each.
constexpr int kStyleNumberCount = 20;
constexpr size_t kSettingTextMax = 260;

// The descriptor table in file order.
std::span<const ConfigKey> ConfigKeys();

// Index of the key named exactly `name`, or -1.
int FindConfigKey(std::string_view name);

// Index of "Style" + three-digit `style` + `param` (e.g. 0, "Frames" gives
// Style000Frames), or -1 when that style has no such key.
int StyleKeyIndex(int style, std::string_view param);

// The general (non-style) keys, in file order.
enum class Key {
  AddDescriptiveCommentBlock,
  AccentCompensation,
  CurrentFileName,
  DefaultTextureFileName,
  DitherBrightness,
  DitherContrast,
  FastRemap,
  FirstRun,
  MainDelay,
  MainDepth,
  MainDither,
  MainEffect,
  MainMaskBackground,
  MainPalette,
  MainRolling,
  MainSteps,
  MainSupercompress,
  MatrixLibrary,
  MatrixDefaultTile,
  OpenPath,
  PatchLevel,
  SampleWindowKeyLine,
  SolidBackground,
  ShowFileOpenPreview,
  // The style keys stand here in the file.
  Truecolour,
  UpdateDelay,
  VersionNumber,
};

constexpr int kLeadingGeneralKeyCount = static_cast<int>(Key::Truecolour);
constexpr int kGeneralKeyCount = static_cast<int>(Key::VersionNumber) + 1;
static_assert(kLeadingGeneralKeyCount + kStyleKeyCount + (kGeneralKeyCount - kLeadingGeneralKeyCount) ==
              kConfigKeyCount);

// Table index of a general key.
constexpr int KeyIndex(Key key) {
  int k = static_cast<int>(key);
  return k < kLeadingGeneralKeyCount ? k : k + kStyleKeyCount;
}

class Settings {
 public:
  // Every value starts at its default.
  Settings();

  void ResetToDefaults();

  // General keys. Number() and SetNumber() serve switches and numbers; Text()
  // and SetText() serve text keys. Asking a key of the other kind is a bug.
  int32_t Number(Key key) const { return NumberAt(KeyIndex(key)); }
  void SetNumber(Key key, int32_t value) { SetNumberAt(KeyIndex(key), value); }
  std::string_view Text(Key key) const { return TextAt(KeyIndex(key)); }
  void SetText(Key key, std::string_view text) { SetTextAt(KeyIndex(key), text); }

  // Any key by table index.
  int32_t NumberAt(int index) const;
  void SetNumberAt(int index, int32_t value);
  std::string_view TextAt(int index) const;
  // Keeps the text up to its first zero byte, and at most kSettingTextMax
  // characters of it.
  void SetTextAt(int index, std::string_view text);

  // The value's storage, for controls that edit a setting in place; stays
  // valid as long as this object. Null for text keys and bad indices.
  int32_t* NumberSlot(int index);

  // Style keys; asking for a key the style does not have is a bug.
  int32_t StyleNumber(int style, std::string_view param) const;
  void SetStyleNumber(int style, std::string_view param, int32_t value);

  bool operator==(const Settings&) const = default;

 private:
  // Text keys leave their number at 0 and number keys leave their text empty.
  std::array<int32_t, kConfigKeyCount> m_numbers{};
  std::array<std::string, kConfigKeyCount> m_texts;
};

// The product's one set of settings. The main dialog owns its lifecycle (read
// when it opens, written when it closes); everything else receives a
// Settings& so tests can use their own.
Settings& ProcessSettings();

}  // namespace tess
