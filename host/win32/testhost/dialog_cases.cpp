// Cases for the main dialog's own behaviour: document lines taken by message,
// documents that match the settings they came from, the sample's size label,
// the custom palette box, the first run and the About box. They run after the
// cases of cases.cpp and start, like those, from the configuration the
// dialog wrote on the first Cancel of the run.
//
// Sections: helpers · cases · table.
#include "host/win32/testhost/case_files.h"
#include "host/win32/testhost/dialog_cases.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>

#include "dialog/dialog_pages.h"
#include "dialog/settings_document.h"
#include "platform/platform.h"
#include "shell/config_file.h"
#include "shell/paths.h"
#include "shell/main_dialog_ids.h"
#include "styles/style_table.h"

namespace tess::testhost {
namespace {

constexpr int kBubbles = 1;   // renders: list entry 1
constexpr int kAtmosphere = 0;  // no renderer yet
constexpr UINT kMsgReadDocumentLine = 1335;
constexpr int kAboutHelpButton = 9;
constexpr int kAboutVersion = 1012;

// ---------------------------------------------------------------- helpers


// The first window of `role` on an effect's page.
int FirstWindow(int effect, PageWindowRole role) {
  for (const PageWindow& window : PageWindows(StyleTable()[effect]))
    if (window.role == role) return window.id;
  Fail("effect " + std::to_string(effect) + " has no window of the wanted kind");
}

LRESULT OfferLine(HWND dialog, int id, const std::string& line) {
  return SendMessageA(GetDlgItem(dialog, id), kMsgReadDocumentLine, 0,
                      reinterpret_cast<LPARAM>(line.c_str()));
}



// ---------------------------------------------------------------- cases

// Lines reach a control by message: a number beyond the spin's range shows as
// written and is stored clamped; a line of another kind or without "=" is
// refused and changes nothing; windows that take no part ignore lines.
void DocumentLinesByMessage(Context& context) {
  UseConfiguration(context, {{"MainEffect", std::to_string(kBubbles)}});
  HostDouble host;
  const int width = PageControlId(0, 2);  // Bubbles "Width:", 16..1024
  const int check = FirstWindow(kBubbles, PageWindowRole::kCheckBox);
  WithDialog(context, host, [&](Session& s, HWND dialog) {
    Expect(OfferLine(dialog, width, "SPNBTN" + std::to_string(width) + "== 5000") == 1,
           "the number field refused its own line");
    Expect(s.ui().Text(dialog, width) == "5000", "field shows " + s.ui().Text(dialog, width));
    Expect(OfferLine(dialog, width, "CHKBOX" + std::to_string(width) + "=1") == 0,
           "the number field took a check-box line");
    Expect(OfferLine(dialog, width, "SPNBTN" + std::to_string(width) + "77") == 0,
           "the number field took a line without \"=\"");
    Expect(s.ui().Text(dialog, width) == "5000", "a refused line changed the field");
    bool was = s.ui().Checked(dialog, check);
    Expect(OfferLine(dialog, check, "CHKBOX" + std::to_string(check) + "=" + (was ? "0" : "1")) == 1,
           "the check box refused its own line");
    Expect(s.ui().Checked(dialog, check) != was, "the check box line changed nothing");
    Expect(OfferLine(dialog, width + kPageLabelIdOffset, "SPNBTN1=1") == 0, "a label took a line");
  });
  std::string width_key = "Style000Width";
  std::string stored = ConfigValue(ReadFile(ConfigPath(context)), width_key);
  Expect(stored == "1024", width_key + " stored as " + stored + ", expected 1024");
}

// A document the dialog saves is, byte for byte, the document the portable
// settings document writes from the configuration and the pattern files the
// dialog then closes with: the dialog and the command line read each
// other's files.
void SavedDocumentMatchesTheSettings(Context& context) {
  const std::string document = context.folder + "\\from_dialog.ts1";
  const std::string expected = context.folder + "\\from_settings.ts1";
  DeleteFileA(document.c_str());
  UseConfiguration(context, {{"CurrentFileName", document}, {"MainEffect", std::to_string(kBubbles)}});
  HostDouble host;
  WithDialog(context, host, [&](Session& s, HWND dialog) {
    s.ui().SelectListItem(dialog, kEffectList, 7);
    s.ui().SetText(dialog, kDelayEdit, "9");
    s.ui().SetChecked(dialog, kDither, true);
    s.ui().SetChecked(dialog, kCustomPalette, false);
    s.ui().SetText(dialog, PageControlId(1, 1), "99");  // Hyperspace "Frames:"
    s.ui().Settle();
    s.ui().Command(dialog, 38);
    s.ui().Settle();
    Expect(s.ui().FindPopup(dialog) == nullptr, "saving showed a message");
  });
  Settings settings;
  Expect(ReadSettings(ConfigPath(context), settings, SystemPlatform()), "configuration unreadable");
  // Fill and fountain buttons keep their records in their pattern files,
  // which the dialog wrote as it closed: the settings document takes them
  // from there.
  PageRecords records;
  for (const StyleEntry& style : StyleTable())
    for (const PageControl& c : style.page)
      if (c.kind == ControlKind::kFillButton)
        records.fills.Put(c.id, CreateFillDescriptor(FillFilePath(SystemPlatform(), c.id), 0, true));
      else if (c.kind == ControlKind::kFountain)
        records.fountains.Put(c.id, CreateFountainRecord(FillFilePath(SystemPlatform(), c.id),
                                                         kFountainClosed, true));
  RecordingReporter reporter;
  Expect(SaveSettingsDocument(expected, settings, host.capabilities, reporter, &records),
         "settings document not written");
  std::string dialog_text = ReadFile(document), settings_text = ReadFile(expected);
  Expect(!dialog_text.empty(), "the dialog saved nothing");
  if (dialog_text == settings_text) return;
  size_t at = 0;
  while (at < dialog_text.size() && at < settings_text.size() && dialog_text[at] == settings_text[at]) ++at;
  size_t line = dialog_text.rfind('\n', at) + 1;
  Fail("documents differ from \"" + dialog_text.substr(line, dialog_text.find('\r', line) - line) + "\"");
}

// The label under the sample names the rendered tile's size; an effect that
// cannot render leaves it empty. Typing waits for UpdateDelay, then redraws.
void SampleSizeLabel(Context& context) {
  UseConfiguration(context, {{"MainEffect", std::to_string(kBubbles)}, {"Style000Width", "128"},
                             {"Style000Depth", "128"}, {"UpdateDelay", "50"}});
  HostDouble host;
  WithDialog(context, host, [&](Session& s, HWND dialog) {
    auto label = [&] { return s.ui().Text(dialog, kSampleSizeLabel); };
    Expect(Eventually([&] { return label() == "128 x 128 pixels"; }), "label \"" + label() + "\"");
    s.ui().SetText(dialog, PageControlId(0, 2), "100");
    Expect(Eventually([&] { return label() == "100 x 128 pixels"; }), "after typing, \"" + label() + "\"");
    s.ui().Shot(dialog, "sample_size_label");
    s.ui().SelectListItem(dialog, kEffectList, kAtmosphere);
    Expect(Eventually([&] { return label().empty(); }), "an empty sample kept \"" + label() + "\"");
  });
}

// Every effect that renders shows a sample and OK builds it: its frames
// reach the host with their delay. A sample with an image names its size and
// covers the middle of its frame; without one the frame is the plain 3-D
// light colour and the size label is empty.
bool SampleShowsAPicture(Session& s, HWND dialog) {
  if (s.ui().Text(dialog, kSampleSizeLabel).empty()) return false;
  HWND sample = GetDlgItem(dialog, kSample);
  HDC dc = GetDC(sample);
  RECT r;
  GetClientRect(sample, &r);
  COLORREF middle = GetPixel(dc, r.right / 2, r.bottom / 2);
  ReleaseDC(sample, dc);
  return middle != GetSysColor(COLOR_3DLIGHT);
}

void EveryEffectShowsItsSampleAndBuilds(Context& context) {
  std::span<const StyleEntry> table = StyleTable();
  int built = 0;
  for (size_t i = 0; i < table.size(); ++i) {
    if (!table[i].init) continue;
    const std::string name = table[i].name;
    UseConfiguration(context, {{"MainEffect", std::to_string(i)}, {"MainDelay", "5"},
                               {"AddDescriptiveCommentBlock", "0"}});
    HostDouble host;
    WithDialog(context, host, [&](Session& s, HWND dialog) {
      s.ui().Settle();
      Expect(Eventually([&] { return SampleShowsAPicture(s, dialog); }, 10000),
             name + ": the sample shows no picture");
      s.ui().Click(dialog, kOkButton);
      Expect(s.WaitReturned(60000), name + ": OK did not end the dialog");
    });
    ExpectNoHostProblems(host);
    Expect(host.LastTask() != nullptr, name + ": no task reached the host");
    int images = 0;
    for (const HostCall& call : host.calls()) {
      if (call.command != kHostAddImage || call.record.size() != sizeof(ImageRecord)) continue;
      ImageRecord image;
      std::memcpy(&image, call.record.data(), sizeof image);
      Expect(image.delay == 5, name + ": frame delay " + std::to_string(image.delay));
      ++images;
    }
    Expect(images >= 2, name + ": " + std::to_string(images) + " frames reached the host");
    ++built;
  }
  Expect(built >= 9, "only " + std::to_string(built) + " effects render");
}

void CustomPaletteDisablesThePaletteList(Context& context) {
  UseConfiguration(context, {});
  HostDouble host;
  WithDialog(context, host, [&](Session& s, HWND dialog) {
    s.ui().Settle();
    Expect(!s.ui().Checked(dialog, kCustomPalette), "custom palette checked at start");
    Expect(s.ui().Enabled(dialog, kPaletteList), "palette list disabled at start");
    s.ui().SetChecked(dialog, kCustomPalette, true);
    Expect(!s.ui().Enabled(dialog, kPaletteList), "palette list enabled with a custom palette");
    s.ui().SetChecked(dialog, kCustomPalette, false);
    Expect(s.ui().Enabled(dialog, kPaletteList), "palette list still disabled");
  });
}

void FirstRunIsCleared(Context& context) {
  UseConfiguration(context, {{"FirstRun", "1"}});
  HostDouble host;
  WithDialog(context, host, [](Session&, HWND) {});
  std::string value = ConfigValue(ReadFile(ConfigPath(context)), "FirstRun");
  Expect(value == "0", "FirstRun written as " + value);
}

void AboutBox(Context& context) {
  UseConfiguration(context, {});
  HostDouble host;
  WithDialog(context, host, [&](Session& s, HWND dialog) {
    s.ui().Click(dialog, kAboutButton);
    Popup about = s.ui().WaitForPopup(dialog);
    Expect(about.caption == "About Tessarine #1", "caption \"" + about.caption + "\"");
    std::string version = s.ui().Text(about.hwnd, kAboutVersion);
    Expect(version.rfind("Version ", 0) == 0 && version.size() > 8, "version \"" + version + "\"");
    s.ui().Shot(about.hwnd, "about_box");
    s.ui().Click(about.hwnd, kAboutHelpButton);
    s.ui().Settle();
    const HostCall* help = host.Last(kHostShowHelp);
    Expect(help && help->text == "ZEPHYRA1.HTML#ABOUT", "help reference \"" + (help ? help->text : "") + "\"");
    s.ui().Dismiss(about);
  });
  ExpectNoHostProblems(host);
}

// ---------------------------------------------------------------- table

constexpr TestCase kDialogCases[] = {
    {"document_lines_by_message", &DocumentLinesByMessage},
    {"saved_document_matches_the_settings", &SavedDocumentMatchesTheSettings},
    {"sample_size_label", &SampleSizeLabel},
    {"every_effect_shows_its_sample_and_builds", &EveryEffectShowsItsSampleAndBuilds},
    {"custom_palette_disables_the_palette_list", &CustomPaletteDisablesThePaletteList},
    {"first_run_is_cleared", &FirstRunIsCleared},
    {"about_box", &AboutBox},
};

}  // namespace

std::span<const TestCase> DialogCases() { return kDialogCases; }

}  // namespace tess::testhost
