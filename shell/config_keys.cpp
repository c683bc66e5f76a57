// The key descriptor table: every setting the configuration file holds, in the
// order of its lines, with kinds, flags and built-in defaults. The checks at
// the end pin the shape of the table at compile time (count, one kind per key,
// unique names, the style keys in one run by ascending style number).
#include "shell/settings.h"

#include <array>
#include <iterator>

namespace tess {
namespace {

constexpr ConfigKey Switch(std::string_view name, int32_t value) {
  return ConfigKey{name, kKindSwitch, 0, 0, value, {}};
}
constexpr ConfigKey Number(std::string_view name, int32_t value) {
  return ConfigKey{name, kKindNumber, 0, 0, value, {}};
}
constexpr ConfigKey Text(std::string_view name, std::string_view value) {
  return ConfigKey{name, kKindText, 0, 0, 0, value};
}
// Informational keys: written for whoever reads the file, never read back.
constexpr ConfigKey WrittenOnly(std::string_view name, int32_t value) {
  return ConfigKey{name, kKindNumber, kFileWrittenOnly, 0, value, {}};
}
constexpr ConfigKey DialogSwitch(std::string_view name, int32_t item, int32_t value) {
  return ConfigKey{name, kKindSwitch, kFileDialogItem, item, value, {}};
}
constexpr ConfigKey DitherNumber(std::string_view name, int32_t item, int32_t value) {
  return ConfigKey{name, kKindNumber | kKindDither, 0, item, value, {}};
}

constexpr ConfigKey kTable[] = {
    DialogSwitch("AddDescriptiveCommentBlock", 103, 1),
    Switch("AccentCompensation", 1),
    Text("CurrentFileName", "untitled.ts1"),
    Text("DefaultTextureFileName", "zephyra1.fft"),
    DitherNumber("DitherBrightness", 100, 20),
    DitherNumber("DitherContrast", 101, 20),
    DialogSwitch("FastRemap", 102, 0),
    Switch("FirstRun", 1),
    Number("MainDelay", 4),
    Number("MainDepth", 32),
    Switch("MainDither", 0),
    Number("MainEffect", 5),
    Switch("MainMaskBackground", 1),
    Number("MainPalette", 6),
    Switch("MainRolling", 1),
    Number("MainSteps", 32),
    Switch("MainSupercompress", 0),
    Text("MatrixLibrary", "zephyra1.mtx"),
    Text("MatrixDefaultTile", ""),
    Text("OpenPath", ""),
    WrittenOnly("PatchLevel", 1),
    Switch("SampleWindowKeyLine", 0),
    Switch("SolidBackground", 0),
    Switch("ShowFileOpenPreview", 1),
    // Colours are 0x00BBGGRR; the top byte of a fill colour belongs to the fill.
    // Style000
    Number("Style000Background", 0x000000),
    Number("Style000Density", 36),
    Number("Style000Depth", 128),
    Number("Style000Drift", 16),
    Number("Style000FillColor1", 0xEAE3DB),
    Number("Style000FillColor2", 0xDDBC9B),
    Number("Style000FillColor3", 0xC08243),
    Number("Style000FillColor4", 0x95632C),
    Number("Style000FillColor5", 0x7E5429),
    Switch("Style000FillEnable2", 1),
    Switch("Style000FillEnable3", 1),
    Switch("Style000FillEnable4", 1),
    Switch("Style000FillEnable5", 1),
    Number("Style000FillOpacity", 255),
    Number("Style000Frames", 64),
    Switch("Style000Inverse", 0),
    Number("Style000Seed", 10632),
    Number("Style000Size", 18),
    Switch("Style000Smooth", 1),
    Number("Style000Width", 128),
    // Style001
    Number("Style001Background", 0x000000),
    Number("Style001Density", 18),
    Number("Style001Depth", 256),
    Number("Style001FillColor1", 0xEAE3DB),
    Number("Style001FillColor2", 0xDDBC9B),
    Number("Style001FillColor3", 0xC08243),
    Number("Style001FillColor4", 0x95632C),
    Number("Style001FillColor5", 0x7E5429),
    Switch("Style001FillEnable2", 1),
    Switch("Style001FillEnable3", 1),
    Switch("Style001FillEnable4", 1),
    Switch("Style001FillEnable5", 1),
    Number("Style001FillOpacity", 160),
    Number("Style001Frames", 64),
    Number("Style001Scroll", 1),
    Number("Style001Seed", 9864),
    Number("Style001Width", 256),
    // Style002
    Number("Style002Background", 0x000000),
    Number("Style002Density", 36),
    Number("Style002Depth", 128),
    Number("Style002FillColor1", 0x996633),
    Number("Style002FillColor2", 0x14CCFF),
    Number("Style002FillColor3", 0x339900),
    Number("Style002FillColor4", 0x990099),
    Number("Style002FillColor5", 0x000099),
    Switch("Style002FillEnable2", 1),
    Switch("Style002FillEnable3", 1),
    Switch("Style002FillEnable4", 1),
    Switch("Style002FillEnable5", 1),
    Number("Style002FillOpacity", 255),
    Number("Style002Frames", 48),
    Number("Style002Roundness", 25),
    Number("Style002Seed", 9874),
    Switch("Style002Solid", 0),
    Number("Style002Thickness", 6),
    Switch("Style002VariAlpha", 1),
    Switch("Style002VariWidth", 1),
    Number("Style002Width", 256),
    // Style003
    Number("Style003Background", 0xFFFFFF),
    Number("Style003FillColor1", 0x7E5429),
    Number("Style003FillColor2", 0x95632C),
    Number("Style003FillColor3", 0xC08243),
    Number("Style003FillColor4", 0xDDBC9B),
    Number("Style003FillColor5", 0xEAE3DB),
    Switch("Style003FillEnable2", 1),
    Switch("Style003FillEnable3", 1),
    Switch("Style003FillEnable4", 1),
    Switch("Style003FillEnable5", 1),
    Number("Style003Frames", 96),
    Number("Style003Size", 24),
    Number("Style003Style1", 1),
    Number("Style003Style2", 0),
    Number("Style003Style3", 2),
    Number("Style003Style4", 3),
    Number("Style003Style5", 7),
    Number("Style003Style6", 6),
    // Style004
    Number("Style004Depth", 16),
    Number("Style004Frames", 64),
    Number("Style004Scroll", 1),
    Number("Style004Width", 256),
    // Style005
    Number("Style005Depth", 16),
    Number("Style005Frames", 256),
    Number("Style005Width", 16),
    // Style006
    Number("Style006Frames", 64),
    Number("Style006Scroll", 1),
    Number("Style006Shape", 0),
    Number("Style006Size", 88),
    // Style007
    Number("Style007Background", 0x462F17),
    Switch("Style007BevelEnable", 1),
    Number("Style007Density", 72),
    Number("Style007Depth", 128),
    Number("Style007Drift", 16),
    Number("Style007FillColor5", 0xEAE3DB),
    Number("Style007FillColor4", 0xDDBC9B),
    Number("Style007FillColor3", 0xC08243),
    Number("Style007FillColor2", 0x95632C),
    Number("Style007FillColor1", 0x7E5429),
    Switch("Style007FillEnable2", 1),
    Switch("Style007FillEnable3", 1),
    Switch("Style007FillEnable4", 1),
    Switch("Style007FillEnable5", 1),
    Number("Style007Frames", 88),
    Number("Style007Seed", 12026),
    Number("Style007Size", 32),
    Number("Style007Style1", 1),
    Number("Style007Style2", 1),
    Number("Style007Style3", 1),
    Number("Style007Style4", 1),
    Number("Style007Style5", 1),
    Number("Style007Width", 160),
    // Style008
    Number("Style008Frames", 64),
    Number("Style008Resize", 100),
    Number("Style008Scroll", 1),
    // Style009
    Number("Style009DarkFill", 0x5F503D),
    Number("Style009Depth", 192),
    Number("Style009Frames", 64),
    Number("Style009Interference", 80),
    Number("Style009LightFill", 0xC4B6AA),
    Switch("Style009RandomDelay", 1),
    Number("Style009Seed", 11234),
    Number("Style009Size", 3),
    Number("Style009Width", 128),
    // Style010
    Number("Style010Background", 0x000000),
    Number("Style010Density", 256),
    Number("Style010Depth", 128),
    Number("Style010FillColor1", 0x0000FF),
    Number("Style010FillColor2", 0x00FF00),
    Number("Style010FillColor3", 0xFF0000),
    Number("Style010FillColor4", 0xFF00FF),
    Number("Style010FillColor5", 0x00FFFF),
    Switch("Style010FillEnable2", 1),
    Switch("Style010FillEnable3", 1),
    Switch("Style010FillEnable4", 1),
    Switch("Style010FillEnable5", 1),
    Number("Style010Frames", 64),
    Switch("Style010LineEast2South", 1),
    Switch("Style010LineHorizontal", 1),
    Switch("Style010LineVertical", 1),
    Switch("Style010LineWest2South", 1),
    Number("Style010Power", 5),
    Number("Style010Seed", 10632),
    Number("Style010Width", 192),
    // Style011
    Number("Style011Density", 32),
    Number("Style011Elevation", 10),
    Number("Style011Frames", 64),
    Number("Style011Mesh", 8),
    Number("Style011Seed", 9872),
    Number("Style011Size", 192),
    // Style012
    Number("Style012End", 0x996633),
    Switch("Style012Inverse", 0),
    Number("Style012Offset", 180),
    Number("Style012Size", 48),
    Number("Style012Start", 0xFFFFFF),
    Number("Style012Rotation", 22),
    // Style013
    Number("Style013Frames", 64),
    Number("Style013Layers", 2),
    Number("Style013Scale", 60),
    Number("Style013Seed", 10356),
    Number("Style013Size", 128),
    // Style014
    Number("Style014Background", 0xFFFFFF),
    Number("Style014Density", 3),
    Number("Style014Drift", 29),
    Number("Style014FillColor1", 0x7E5429),
    Number("Style014FillColor2", 0x95632C),
    Number("Style014FillColor3", 0xC08243),
    Number("Style014FillColor4", 0xDDBC9B),
    Number("Style014FillColor5", 0xEAE3DB),
    Switch("Style014FillEnable2", 1),
    Switch("Style014FillEnable3", 1),
    Switch("Style014FillEnable4", 1),
    Switch("Style014FillEnable5", 1),
    Number("Style014Mode", 0),
    Number("Style014Seed", 10632),
    Number("Style014Size", 96),
    Number("Style014Spokes", 6),
    // Style015
    Number("Style015Background", 0xFFFFFF),
    Number("Style015Density", 36),
    Number("Style015Depth", 192),
    Number("Style015Drift", 8),
    Number("Style015FillColor1", 0xEAE3DB),
    Number("Style015FillColor2", 0xDDBC9B),
    Number("Style015FillColor3", 0xC08243),
    Number("Style015FillColor4", 0x95632C),
    Number("Style015FillColor5", 0x7E5429),
    Switch("Style015FillEnable2", 1),
    Switch("Style015FillEnable3", 1),
    Switch("Style015FillEnable4", 1),
    Switch("Style015FillEnable5", 1),
    Number("Style015FillOpacity", 160),
    Number("Style015Frames", 64),
    Number("Style015Seed", 10645),
    Number("Style015Size", 48),
    Number("Style015Width", 192),
    // Style016
    Number("Style016Background", 0x002051),
    Number("Style016Density", 24),
    Number("Style016Depth", 128),
    Switch("Style016DirDown", 1),
    Switch("Style016DirLeft", 1),
    Switch("Style016DirRight", 1),
    Switch("Style016DirUp", 1),
    Number("Style016FillColor1", 0x3787FF),
    Number("Style016FillColor2", 0x0066FF),
    Number("Style016FillColor3", 0x0053CE),
    Number("Style016FillColor4", 0x0046AE),
    Number("Style016FillColor5", 0x003077),
    Switch("Style016FillEnable2", 1),
    Switch("Style016FillEnable3", 1),
    Switch("Style016FillEnable4", 1),
    Switch("Style016FillEnable5", 1),
    Number("Style016Frames", 64),
    Number("Style016Glare", 160),
    Number("Style016Seed", 10634),
    Number("Style016Shade", 70),
    Number("Style016ShadowOffset", 8),
    Number("Style016ShadowOpacity", 48),
    Number("Style016Size", 20),
    Number("Style016Width", 128),
    // Style017
    Number("Style017Background", 0x333333),
    Number("Style017Density", 36),
    Number("Style017Depth", 128),
    Number("Style017FillColor1", 0xFF0000),
    Number("Style017FillColor2", 0x00FF00),
    Number("Style017FillColor3", 0x00CCFF),
    Number("Style017FillColor4", 0x0033CC),
    Number("Style017FillColor5", 0x0066FF),
    Switch("Style017FillEnable2", 1),
    Switch("Style017FillEnable3", 1),
    Switch("Style017FillEnable4", 1),
    Switch("Style017FillEnable5", 1),
    Number("Style017Frames", 64),
    Number("Style017Glare", 160),
    Number("Style017Seed", 12054),
    Number("Style017Shade", 70),
    Number("Style017ShadowOffset", 8),
    Number("Style017ShadowOpacity", 48),
    Number("Style017Size", 20),
    Number("Style017Width", 128),
    // Style018
    Number("Style018Background", 0x000000),
    Number("Style018Density", 40),
    Number("Style018Depth", 8),
    Number("Style018FillColor1", 0xFF0000),
    Number("Style018FillColor2", 0x00FF00),
    Number("Style018FillColor3", 0x00CCFF),
    Number("Style018FillColor4", 0x0033CC),
    Number("Style018FillColor5", 0x0066FF),
    Switch("Style018FillEnable2", 1),
    Switch("Style018FillEnable3", 1),
    Switch("Style018FillEnable4", 1),
    Switch("Style018FillEnable5", 1),
    Number("Style018Glare", 160),
    Number("Style018Padding", 0),
    Number("Style018Seed", 12055),
    Number("Style018Shade", 70),
    Number("Style018ShadowOffset", 0),
    Number("Style018ShadowOpacity", 0),
    Number("Style018Size", 14),
    Number("Style018Width", 12),
    // Style019
    Number("Style019Amplitude", 75),
    Number("Style019Background", 0x000000),
    Number("Style019Depth", 90),
    Number("Style019FillColor1", 0xFF0000),
    Number("Style019FillColor2", 0x00FF00),
    Number("Style019FillColor3", 0x00CCFF),
    Number("Style019FillColor4", 0x0033CC),
    Number("Style019FillColor5", 0x0066FF),
    Switch("Style019FillEnable2", 1),
    Switch("Style019FillEnable3", 1),
    Switch("Style019FillEnable4", 1),
    Switch("Style019FillEnable5", 1),
    Number("Style019Frames", 64),
    Number("Style019Glare", 160),
    Number("Style019Scroll", 1),
    Number("Style019Seed", 12055),
    Number("Style019Shade", 70),
    Number("Style019Size", 10),
    Number("Style019Width", 190),

    Switch("Truecolour", 1),
    Number("UpdateDelay", 1000),
    WrittenOnly("VersionNumber", 64),
};

constexpr std::string_view kStylePrefix = "Style";

// The style number of a style key ("Style007Size" gives 7), or -1.
constexpr int StyleOf(std::string_view name) {
  if (name.size() <= 8 || name.substr(0, 5) != kStylePrefix) return -1;
  int n = 0;
  for (char c : name.substr(5, 3)) {
    if (c < '0' || c > '9') return -1;
    n = n * 10 + (c - '0');
  }
  return n;
}

constexpr bool OneKindEach() {
  for (const ConfigKey& k : kTable) {
    int kinds = (k.kind & kKindSwitch ? 1 : 0) + (k.kind & kKindText ? 1 : 0) + (k.kind & kKindNumber ? 1 : 0);
    if (kinds != 1) return false;
  }
  return true;
}

constexpr bool NamesUnique() {
  for (size_t i = 0; i < std::size(kTable); ++i)
    for (size_t j = i + 1; j < std::size(kTable); ++j)
      if (kTable[i].name == kTable[j].name) return false;
  return true;
}

// Style keys fill exactly the slots between the leading and trailing general
// keys, grouped by ascending style number, and every style has keys.
constexpr bool StyleKeysInOneRun() {
  int previous = 0;
  for (int i = 0; i < kConfigKeyCount; ++i) {
    int style = StyleOf(kTable[i].name);
    bool in_run = i >= kLeadingGeneralKeyCount && i < kLeadingGeneralKeyCount + kStyleKeyCount;
    if ((style >= 0) != in_run) return false;
    if (!in_run) continue;
    if (style != previous && style != previous + 1) return false;
    if (i == kLeadingGeneralKeyCount && style != 0) return false;
    previous = style;
  }
  return previous == kStyleNumberCount - 1;
}

// Where each style's run of keys starts in the table; entry
// kStyleNumberCount is the end of the last run. Looking a control's key up
// happens for every control of a page whenever one is shown, read or listed,
// so it searches one style's dozen keys rather than all of them.
struct StyleRuns {
  std::array<int, kStyleNumberCount + 1> start{};
};

constexpr StyleRuns FindStyleRuns() {
  StyleRuns runs;
  int style = 0;
  runs.start[0] = kLeadingGeneralKeyCount;
  for (int i = kLeadingGeneralKeyCount; i < kLeadingGeneralKeyCount + kStyleKeyCount; ++i)
    while (StyleOf(kTable[i].name) > style) runs.start[++style] = i;
  while (style < kStyleNumberCount) runs.start[++style] = kLeadingGeneralKeyCount + kStyleKeyCount;
  return runs;
}

constexpr StyleRuns kStyleRuns = FindStyleRuns();

static_assert(std::size(kTable) == kConfigKeyCount);
static_assert(OneKindEach());
static_assert(NamesUnique());
static_assert(StyleKeysInOneRun());
static_assert(kTable[KeyIndex(Key::ShowFileOpenPreview)].name == "ShowFileOpenPreview");
static_assert(kTable[KeyIndex(Key::Truecolour)].name == "Truecolour");
static_assert(kTable[KeyIndex(Key::VersionNumber)].name == "VersionNumber");

}  // namespace

std::span<const ConfigKey> ConfigKeys() { return kTable; }

int FindConfigKey(std::string_view name) {
  for (int i = 0; i < kConfigKeyCount; ++i)
    if (kTable[i].name == name) return i;
  return -1;
}

int StyleKeyIndex(int style, std::string_view param) {
  if (style < 0 || style >= kStyleNumberCount || param.empty()) return -1;
  // Every style key is "Style" + three digits + the parameter (checked above).
  for (int i = kStyleRuns.start[style]; i < kStyleRuns.start[style + 1]; ++i)
    if (kTable[i].name.substr(8) == param) return i;
  return -1;
}

}  // namespace tess
