// The cases, in the order they run. The first dialog case records the
// configuration the dialog writes from its defaults; later cases start from
// that file, with the keys they care about changed, because the plug-in's
// settings live for the whole process and are only replaced by what the file
// holds.
//
// Sections: files and settings · case helpers · cases · table.
#include "host/win32/testhost/case_files.h"
#include "host/win32/testhost/cases.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <vector>

#include "dialog/dialog_pages.h"
#include "shell/main_dialog_ids.h"
#include "styles/style_table.h"

namespace tess::testhost {
namespace {

// Builds use an effect that renders ("Bubbles", list entry 1): several of
// the twenty cannot render yet.
constexpr const char* kBuildingEffect = "1";
constexpr int kBuildTimeoutMs = 60000;

// Shift "held" while the dialog opens (the Win32 platform's test override).
void HoldShift(bool held) {
  SetEnvironmentVariableA("TESSARINE_TEST_SHIFT", held ? "1" : nullptr);
}

// ---------------------------------------------------------------- case helpers

void ExpectNoProblems(const HostDouble& host) {
  if (!host.problems().empty()) Fail(host.problems().front());
}

void ExpectMessage(const Popup& popup, const std::string& text) {
  Expect(popup.caption == "Message", "message box caption \"" + popup.caption + "\"");
  Expect(popup.text == text, "message \"" + popup.text + "\", expected \"" + text + "\"");
}

std::string Join(const std::vector<int32_t>& commands) {
  std::string out;
  for (int32_t c : commands) out += (out.empty() ? "" : " ") + std::to_string(c);
  return out;
}

// 1 (or 5), one 2 per frame, 3 when a comment is expected, 4.
void ExpectBuildSequence(const HostDouble& host, int32_t create, bool comment) {
  const TaskRecord* task = host.LastTask();
  Expect(task != nullptr, "no task record reached the host");
  std::vector<int32_t> expected{create};
  expected.insert(expected.end(), task->frame_count, kHostAddImage);
  if (comment) expected.push_back(kHostAddComment);
  expected.push_back(kHostCloseTask);
  std::vector<int32_t> seen = host.Sequence({1, 2, 3, 4, 5});
  Expect(seen == expected, "host saw commands " + Join(seen) + ", expected " + Join(expected));
  Expect(host.Last(kHostCloseTask)->param == kHostTaskFinished, "task not closed as finished");
}

std::vector<const ImageRecord*> ImageRecords(const HostDouble& host) {
  std::vector<const ImageRecord*> images;
  for (const HostCall& call : host.calls())
    if (call.command == kHostAddImage && call.record.size() == sizeof(ImageRecord))
      images.push_back(reinterpret_cast<const ImageRecord*>(call.record.data()));
  return images;
}

// Opens the dialog, runs `body`, and presses Cancel unless the body closed it.
void WithDialog(Context& context, HostDouble& host, const std::string& shot,
                const std::function<void(Session&, HWND)>& body, bool with_service = true) {
  host.set_log(context.log);
  Session session(context.plugin, host, context.shots);
  session.Run(host.MakeRecord(with_service), [&](Session& s) {
    HWND dialog = s.OpenDialog();
    if (context.first_open_ms < 0) context.first_open_ms = s.open_ms();
    if (!shot.empty()) s.ui().Shot(dialog, shot);
    body(s, dialog);
    if (IsWindow(dialog) && !s.WaitReturned(0)) {
      s.ui().Click(dialog, kCancelButton);
      Expect(s.WaitReturned(10000), "Cancel did not close the dialog");
    }
  });
  Expect(session.result() == 1, "PLUGINDoBuild returned " + std::to_string(session.result()));
}

// Types `path` into the common open dialog and presses its OK button.
void ChooseFile(Session& s, HWND dialog, const std::string& path, const std::string& shot) {
  Popup chooser = s.ui().WaitForPopup(dialog);
  // Explorer-style file dialogs name their file-name box cmb13 or edt1.
  HWND box = GetDlgItem(chooser.hwnd, 0x47C);
  if (!box) box = GetDlgItem(chooser.hwnd, 0x480);
  Expect(box != nullptr, "the open dialog has no file-name box");
  s.ui().Shot(chooser.hwnd, shot);
  SendMessageA(box, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
  s.ui().Click(chooser.hwnd, IDOK);
  Expect(s.ui().WaitGone(chooser.hwnd), "the open dialog did not close");
  s.ui().Settle();
}

std::string Differences(const std::vector<std::pair<int, std::string>>& expected,
                        const std::vector<std::pair<int, std::string>>& seen) {
  if (expected.size() != seen.size()) return "control count changed";
  for (size_t i = 0; i < expected.size(); ++i)
    if (expected[i] != seen[i])
      return "control " + std::to_string(expected[i].first) + " is " + seen[i].second +
             ", expected " + expected[i].second;
  return {};
}

// ---------------------------------------------------------------- cases

void DescriptionRecord(Context& context) {
  std::vector<uint8_t> record(1024, 0xCD);
  const uint32_t size = 600;
  std::memcpy(record.data(), &size, 4);
  Expect(context.plugin.get_params(record.data(), 0x12345678) == 1, "did not return 1");
  const auto* r = reinterpret_cast<const tess::DescriptionRecord*>(record.data());
  Expect(r->size == size, "size word not kept");
  Expect(r->version == kHostInterfaceVersion, "version " + std::to_string(r->version));
  Expect(std::string(r->name) == "Tessarine #1", std::string("name \"") + r->name + "\"");
  std::string notice(reinterpret_cast<const char*>(record.data() + 269));
  Expect(notice.rfind("Tessarine #1 Plugin", 0) == 0 && notice.size() > 19, "notice \"" + notice + "\"");
  for (size_t i = 269 + notice.size(); i < size; ++i) Expect(record[i] == 0, "byte " + std::to_string(i) + " not cleared");
  for (size_t i = size; i < record.size(); ++i) Expect(record[i] == 0xCD, "byte " + std::to_string(i) + " past the size written");
}

void CancelWritesConfiguration(Context& context) {
  DeleteFileA(ConfigPath(context).c_str());
  HostDouble host;
  WithDialog(context, host, "cancel_writes_configuration", [](Session&, HWND) {});
  Expect(FileExists(ConfigPath(context)), "no configuration file after Cancel");
  context.baseline = ReadFile(ConfigPath(context));
  Expect(ConfigValue(context.baseline, "MainDelay") != "<missing>", "configuration lacks MainDelay");
  Expect(host.Sequence({1, 2, 3, 4, 5}).empty(), "Cancel sent build commands");
  ExpectNoProblems(host);
}

// Measures, never judges, how long the dialog takes to open: a timed verdict
// on a shared machine says more about the neighbours than about the dialog.
// The processor time of the host's thread and the clock time are printed
// against the 300 ms target; the best of three opens counts. The case fails
// only when the dialog does not open.
void DialogOpenTime(Context& context) {
  UseConfiguration(context, {});
  double best_cpu = 1e9, best_wall = 1e9;
  std::string walls;
  for (int round = 0; round < 3; ++round) {
    HostDouble host;
    WithDialog(context, host, round == 0 ? "dialog_open_time" : "", [&](Session& s, HWND) {
      best_cpu = std::min(best_cpu, s.open_cpu_ms());
      best_wall = std::min(best_wall, s.open_ms());
      walls += (walls.empty() ? "" : ", ") + std::to_string(static_cast<int>(s.open_ms()));
    });
  }
  Expect(best_wall < 1e9, "the dialog never came on screen");
  std::printf("dialog on screen after %.0f ms of the host thread's time, %.0f ms on the clock "
              "(opens: %s ms; first open of this run: %.0f ms; target 300 ms: %s)\n",
              best_cpu, best_wall, walls.c_str(), context.first_open_ms,
              best_cpu <= 300 ? "met" : "not met on this run");
}

void OkBuildsFrames(Context& context) {
  for (bool comment : {true, false}) {
    UseConfiguration(context, {{"MainEffect", kBuildingEffect},
                               {"MainDelay", "6"},
                               {"AddDescriptiveCommentBlock", comment ? "1" : "0"}});
    HostDouble host;
    WithDialog(context, host, comment ? "ok_builds_frames" : "", [](Session& s, HWND dialog) {
      s.ui().Click(dialog, kOkButton);
      Expect(s.WaitReturned(kBuildTimeoutMs), "OK did not end the dialog");
    });
    ExpectNoProblems(host);
    ExpectBuildSequence(host, kHostCreateTask, comment);
    for (const ImageRecord* image : ImageRecords(host))
      Expect(image->delay == 6, "frame delay " + std::to_string(image->delay));
    Expect(host.Last(kHostStatusText) != nullptr, "no status text during the build");
  }
}

void TestButtonBuildsTrial(Context& context) {
  UseConfiguration(context, {{"MainEffect", kBuildingEffect}, {"AddDescriptiveCommentBlock", "0"}});
  HostDouble host;
  WithDialog(context, host, "", [](Session& s, HWND dialog) {
    s.ui().Click(dialog, kTestButton);
    s.ui().Settle(kBuildTimeoutMs);
    Expect(IsWindowVisible(dialog), "the dialog closed after Test");
    s.ui().Shot(dialog, "test_button_builds_trial");
  });
  ExpectNoProblems(host);
  ExpectBuildSequence(host, kHostCreateTestTask, false);
}

void HostRefuses(Context& context, int32_t command, const std::string& message,
                 const std::string& shot) {
  UseConfiguration(context, {{"MainEffect", kBuildingEffect}, {"AddDescriptiveCommentBlock", "1"}});
  HostDouble host;
  host.refuse = command;
  WithDialog(context, host, "", [&](Session& s, HWND dialog) {
    s.ui().Click(dialog, kOkButton);
    Popup box = s.ui().WaitForPopup(dialog, kBuildTimeoutMs);
    s.ui().Shot(box.hwnd, shot);
    ExpectMessage(box, message);
    s.ui().Dismiss(box);
    Expect(s.WaitReturned(10000), "OK did not end the dialog after the message");
  });
  ExpectNoProblems(host);
  std::vector<int32_t> seen = host.Sequence({1, 2, 3, 4, 5});
  std::vector<int32_t> expected = command == kHostCreateTask ? std::vector<int32_t>{1}
                                                             : std::vector<int32_t>{1, 2, 4};
  Expect(seen == expected, "host saw commands " + Join(seen) + ", expected " + Join(expected));
  if (command == kHostAddImage)
    Expect(host.Last(kHostCloseTask)->param == kHostTaskAbandoned, "task not closed as abandoned");
}

void HostRefusesNewTask(Context& context) {
  HostRefuses(context, kHostCreateTask, "Error creating new task.", "host_refuses_new_task");
}

void HostRefusesImage(Context& context) {
  HostRefuses(context, kHostAddImage,
              "There has been an error adding an image to the current file object.",
              "host_refuses_image");
}

void HelpButton(Context& context) {
  UseConfiguration(context, {});
  HostDouble host;
  WithDialog(context, host, "", [&](Session& s, HWND dialog) {
    s.ui().Click(dialog, kHelpButton);
    s.ui().Settle();
    Expect(s.ui().FindPopup(dialog) == nullptr, "a message appeared although the host showed help");
    const HostCall* help = host.Last(kHostShowHelp);
    Expect(help && help->text == "ZEPHYRA1.HTML#PREFACE", "help reference \"" + (help ? help->text : "") + "\"");
    host.refuse = kHostShowHelp;
    s.ui().Click(dialog, kHelpButton);
    Popup box = s.ui().WaitForPopup(dialog);
    s.ui().Shot(box.hwnd, "help_button");
    ExpectMessage(box, "There has been an error displaying the Help document.");
    s.ui().Dismiss(box);
  });
  ExpectNoProblems(host);
}

void NullServiceFunction(Context& context) {
  UseConfiguration(context, {});
  HostDouble host;
  host.set_log(context.log);
  Session session(context.plugin, host, context.shots);
  session.Run(host.MakeRecord(false), [](Session& s) {
    HWND box = s.ui().WaitForDialog("Message");
    Popup popup{box, s.ui().Text(box), s.ui().Text(box, 0xFFFF)};
    s.ui().Shot(box, "null_service_function");
    ExpectMessage(popup, "Internal error");
    s.ui().Dismiss(popup);
    Expect(s.WaitReturned(10000), "the dialog stayed open without a service function");
  });
  Expect(session.result() == 1, "PLUGINDoBuild returned " + std::to_string(session.result()));
}

void CapabilityBits(Context& context) {
  for (uint32_t caps : {0u, 1u, 2u, 3u}) {
    UseConfiguration(context, {{"Truecolour", "1"}});
    HostDouble host;
    host.capabilities = caps;
    const std::string where = " with capabilities " + std::to_string(caps);
    WithDialog(context, host, "capability_bits_" + std::to_string(caps), [&](Session& s, HWND dialog) {
      const bool optimise = caps & kHostCapOptimise, true_colour = caps & kHostCapTrueColour;
      Expect(s.ui().Enabled(dialog, kTrueColour) == true_colour, "true colour enabled state" + where);
      Expect(s.ui().Checked(dialog, kTrueColour) == true_colour, "true colour check" + where);
      Expect(s.ui().Enabled(dialog, kSupercompress) == optimise, "supercompress enabled state" + where);
      std::string range = s.ui().Text(dialog, kDelayUpDown);
      Expect(range == (optimise ? "1,25,4" : "1,250,40"), "delay range \"" + range + "\"" + where);
    });
  }
}

void EffectPagesShowOnlyTheirControls(Context& context) {
  UseConfiguration(context, {});
  HostDouble host;
  WithDialog(context, host, "", [&](Session& s, HWND dialog) {
    auto table = StyleTable();
    for (int index = static_cast<int>(table.size()) - 1; index >= 0; --index) {
      s.ui().SelectListItem(dialog, kEffectList, index);
      s.ui().Settle();
      for (int page = 0; page < static_cast<int>(table.size()); ++page)
        for (const PageWindow& window : PageWindows(table[page])) {
          bool shown = s.ui().Visible(dialog, window.id);
          if (shown != (page == index))
            Fail("effect " + std::to_string(index) + ": control " + std::to_string(window.id) +
                 " of page " + std::to_string(page) + (shown ? " shown" : " hidden"));
        }
      if (index == 0 || index == 7) s.ui().Shot(dialog, "effect_page_" + std::to_string(index));
    }
  });
}

void SpinTypedOutOfRangeIsClamped(Context& context) {
  struct Entry { uint32_t caps; const char* typed; const char* stored; };
  for (Entry entry : {Entry{3, "999", "25"}, Entry{0, "999", "250"}, Entry{3, "0", "1"}}) {
    UseConfiguration(context, {});
    HostDouble host;
    host.capabilities = entry.caps;
    WithDialog(context, host, "", [&](Session& s, HWND dialog) {
      s.ui().SetText(dialog, kDelayEdit, entry.typed);
      s.ui().Settle();
      s.ui().Shot(dialog, std::string("spin_typed_") + entry.typed + "_caps_" + std::to_string(entry.caps));
    });
    std::string stored = ConfigValue(ReadFile(ConfigPath(context)), "MainDelay");
    Expect(stored == entry.stored, std::string("typed ") + entry.typed + ", stored " + stored +
                                       ", expected " + entry.stored);
  }
}

void ShiftHeld(Context& context) {
  const std::string document = context.folder + "\\kept.ts1";
  struct Entry { bool shift; uint32_t caps; const char* delay; };
  for (Entry entry : {Entry{false, 3, "17"}, Entry{true, 3, "4"}, Entry{true, 0, "10"}}) {
    UseConfiguration(context, {{"MainDelay", "17"}, {"CurrentFileName", document}});
    HostDouble host;
    host.capabilities = entry.caps;
    HoldShift(entry.shift);
    std::string shown;
    try {
      WithDialog(context, host, entry.shift ? "shift_held_" + std::to_string(entry.caps) : "",
                 [&](Session& s, HWND dialog) { shown = s.ui().Text(dialog, kDelayEdit); });
    } catch (...) {
      HoldShift(false);
      throw;
    }
    HoldShift(false);
    const std::string where = entry.shift ? " with Shift held" : " without Shift";
    Expect(shown == entry.delay, "delay shows " + shown + where + ", expected " + entry.delay);
    std::string name = ConfigValue(ReadFile(ConfigPath(context)), "CurrentFileName");
    bool untitled = name.size() >= 12 && _stricmp(name.c_str() + name.size() - 12, "untitled.ts1") == 0;
    Expect(untitled == entry.shift, "document name \"" + name + "\"" + where);
  }
}

// The first spin field and the first check box of one effect's page, for
// changing page controls as well as the dialog's own.
struct PageSample {
  int edit = 0, check = 0;
};

PageSample SamplePage(int effect) {
  PageSample sample;
  int previous_edit = 0;
  for (const PageWindow& window : PageWindows(StyleTable()[effect])) {
    if (window.role == PageWindowRole::kUpDown && !sample.edit && window.id == previous_edit + 10000)
      sample.edit = previous_edit;
    if (window.role == PageWindowRole::kCheckBox && !sample.check) sample.check = window.id;
    previous_edit = window.role == PageWindowRole::kEdit ? window.id : 0;
  }
  return sample;
}

void SetPageEdit(Session& s, HWND dialog, int id, bool low) {
  std::string range = s.ui().Text(dialog, id + 10000);
  int min = 0, max = 0, dflt = 0;
  if (std::sscanf(range.c_str(), "%d,%d,%d", &min, &max, &dflt) < 2) Fail("page spin text \"" + range + "\"");
  s.ui().SetText(dialog, id, std::to_string(low ? min : max));
}

void SetDocumentControls(Session& s, HWND dialog, int effect, bool first) {
  s.ui().SelectListItem(dialog, kEffectList, effect);
  s.ui().SetText(dialog, kDelayEdit, first ? "7" : "12");
  s.ui().SetChecked(dialog, kDither, first);
  s.ui().SetChecked(dialog, kCustomPalette, false);
  s.ui().SelectListItem(dialog, kPaletteList, first ? 3 : 1);
  PageSample page = SamplePage(effect);
  if (page.edit) SetPageEdit(s, dialog, page.edit, first);
  if (page.check) s.ui().SetChecked(dialog, page.check, first);
  s.ui().Settle();
}

void ColourButtonAsksTheHost(Context& context) {
  UseConfiguration(context, {{"MainEffect", kBuildingEffect}});
  HostDouble host;
  host.chosen_colour = 0x00336699;
  WithDialog(context, host, "", [&](Session& s, HWND dialog) {
    int button = 0;
    for (const PageWindow& window : PageWindows(StyleTable()[1]))
      if (window.role == PageWindowRole::kColourButton && !button) button = window.id;
    Expect(button != 0, "the page has no colour button");
    const std::string before = s.ui().Text(dialog, button);
    s.ui().Click(dialog, button);
    s.ui().Settle();
    const HostCall* pick = host.Last(kHostChooseColour);
    Expect(pick != nullptr, "the colour button did not ask the host");
    const auto* sent = reinterpret_cast<const ColourPickerRecord*>(pick->record.data());
    Expect(sent->colour == (ColourTextValue(before) & 0x00FFFFFFu), "the request did not carry the current colour");
    Expect(s.ui().Text(dialog, button) == std::to_string(0x00336699), "chosen colour not taken");
    s.ui().Shot(dialog, "colour_button_asks_the_host");
    host.refuse = kHostChooseColour;
    host.chosen_colour = 0x00FFFFFF;
    s.ui().Click(dialog, button);
    s.ui().Settle();
    Expect(host.Sequence({kHostChooseColour}).size() == 2, "the second click did not ask the host");
    Expect(s.ui().Text(dialog, button) == std::to_string(0x00336699), "a refused choice changed the colour");
  });
  ExpectNoProblems(host);
}

void DocumentSaveThenLoad(Context& context) {
  const std::string document = context.folder + "\\round.ts1";
  DeleteFileA(document.c_str());
  UseConfiguration(context, {{"CurrentFileName", document}});
  HostDouble host;
  WithDialog(context, host, "", [&](Session& s, HWND dialog) {
    SetDocumentControls(s, dialog, 5, true);
    auto saved = ControlValues(s.ui(), dialog);
    s.ui().Command(dialog, 38);  // "Save": the name is set, so no dialog
    s.ui().Settle();
    Expect(s.ui().FindPopup(dialog) == nullptr, "saving showed a message");
    Expect(FileExists(document), "Save wrote no document");
    s.ui().Shot(dialog, "document_saved");
    SetDocumentControls(s, dialog, 2, false);
    Expect(!Differences(saved, ControlValues(s.ui(), dialog)).empty(), "changing the controls changed nothing");
    s.ui().Command(dialog, 37);  // "Open"
    ChooseFile(s, dialog, document, "document_open_dialog");
    Expect(s.ui().FindPopup(dialog) == nullptr, "loading showed a message");
    s.ui().Shot(dialog, "document_loaded");
    std::string difference = Differences(saved, ControlValues(s.ui(), dialog));
    Expect(difference.empty(), "after loading, " + difference);
  });
}

void DamagedDocumentChangesNothing(Context& context) {
  const std::string document = context.folder + "\\damaged.ts1";
  WriteFile(document, "Not a settings document\r\nSPNBTN11=99\r\nCHKBOX15=1\r\n");
  UseConfiguration(context, {{"CurrentFileName", document}});
  HostDouble host;
  WithDialog(context, host, "", [&](Session& s, HWND dialog) {
    auto before = ControlValues(s.ui(), dialog);
    s.ui().Command(dialog, 37);
    ChooseFile(s, dialog, document, "");
    Popup box = s.ui().WaitForPopup(dialog);
    s.ui().Shot(box.hwnd, "damaged_document");
    ExpectMessage(box, "This file has been damaged.");
    s.ui().Dismiss(box);
    std::string difference = Differences(before, ControlValues(s.ui(), dialog));
    Expect(difference.empty(), "after the damaged file, " + difference);
  });
}

// ---------------------------------------------------------------- table

constexpr TestCase kCases[] = {
    {"description_record", &DescriptionRecord},
    {"cancel_writes_configuration", &CancelWritesConfiguration},
    {"dialog_open_time", &DialogOpenTime},
    {"ok_builds_frames", &OkBuildsFrames},
    {"test_button_builds_trial", &TestButtonBuildsTrial},
    {"host_refuses_new_task", &HostRefusesNewTask},
    {"host_refuses_image", &HostRefusesImage},
    {"help_button", &HelpButton},
    {"null_service_function", &NullServiceFunction},
    {"capability_bits", &CapabilityBits},
    {"effect_pages_show_only_their_controls", &EffectPagesShowOnlyTheirControls},
    {"spin_typed_out_of_range_is_clamped", &SpinTypedOutOfRangeIsClamped},
    {"shift_held", &ShiftHeld},
    {"colour_button_asks_the_host", &ColourButtonAsksTheHost},
    {"document_save_then_load", &DocumentSaveThenLoad},
    {"damaged_document_changes_nothing", &DamagedDocumentChangesNothing},
};

}  // namespace

std::span<const TestCase> Cases() { return kCases; }

}  // namespace tess::testhost
