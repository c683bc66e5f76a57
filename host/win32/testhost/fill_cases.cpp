// Cases for the fills' windows in the main dialog: the fill button's kind
// menu, its gradient editor, its pattern file across runs and with Shift
// held, its FILLBT document lines, and the direction pickers' clicks. They
// run after the dialog cases and start, like those, from the configuration
// the dialog wrote on the first Cancel of the run.
//
// Records are checked where the product keeps them: in the lines of saved
// documents, in the .flp files and in the configuration file.
//
// Sections: helpers · picker cases · fill button cases · table.
#include "host/win32/testhost/fill_cases.h"

#include <cstdio>
#include <cstring>
#include <functional>
#include <sstream>
#include <vector>

#include "dialog/dialog_pages.h"
#include "fills/fill_descriptor.h"
#include "host/win32/testhost/case_files.h"
#include "shell/document.h"
#include "shell/main_dialog_ids.h"
#include "styles/style_table.h"

namespace tess::testhost {
namespace {

constexpr UINT kMsgShowPage = 1224;
constexpr UINT kMsgReadDocumentLine = 1335;
constexpr int kSaveCommand = 38;
constexpr int kOpenCommand = 37;
constexpr int kBuildTimeoutMs = 60000;

// Bubbles renders; its "Color 1:" is a fill button.
constexpr int kBubblesNumber = 0;
constexpr int kBubblesFill = PageControlId(kBubblesNumber, 11);
// Four-way and two-way pickers: Hyperspace and Shaped Fountain, "Scroll".
constexpr int kHyperspaceNumber = 1;
constexpr int kShapedFountainNumber = 6;
constexpr int kWaveletNumber = 19;
constexpr int kHyperspacePicker = PageControlId(kHyperspaceNumber, 10);
constexpr int kShapedFountainPicker = PageControlId(kShapedFountainNumber, 10);

// ---------------------------------------------------------------- helpers

int ListIndex(int style_number) { return StyleListIndex(*StyleByNumber(style_number)); }

void HoldShift(bool held) { SetEnvironmentVariableA("TESSARINE_TEST_SHIFT", held ? "1" : nullptr); }




std::string FillFile(const Context& context, int id) {
  char name[32];
  std::snprintf(name, sizeof name, "Fill%05d.flp", id);
  return context.appdata + "\\Brindlewood\\Tessarine 1\\" + name;
}

// The value of control `id`'s line in a document's text, or "<missing>".
std::string LineValueIn(const std::string& document, const std::string& tag, int id) {
  std::istringstream lines(document);
  const std::string head = tag + std::to_string(id) + "=";
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.rfind(head, 0) == 0) return line.substr(head.size());
  }
  return "<missing>";
}

FillDescriptor RecordOf(const std::string& bytes, const std::string& what) {
  FillDescriptor record;
  Expect(ParseFillDescriptor(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), record),
         what + " holds no fill record");
  return record;
}

// The fill record of control `id` in a saved document.
FillDescriptor RecordInDocument(const std::string& document, int id) {
  std::string hex = LineValueIn(document, "FILLBT", id);
  Buffer<uint8_t> bytes = HexDecode(hex, kFillDescriptorSize);
  Expect(static_cast<bool>(bytes), "no FILLBT" + std::to_string(id) + " line of 854 bytes");
  return RecordOf(std::string(bytes.get(), bytes.get() + kFillDescriptorSize), "the FILLBT line");
}

// Saves the dialog's document to the current name (set by the case).
std::string SaveDocumentNow(Session& s, HWND dialog, const std::string& path) {
  DeleteFileA(path.c_str());
  s.ui().Command(dialog, kSaveCommand);
  s.ui().Settle();
  Expect(s.ui().FindPopup(dialog) == nullptr, "saving showed a window");
  Expect(FileExists(path), "Save wrote no document");
  return ReadFile(path);
}

// "Open" with `path` typed into the file dialog.
void OpenDocumentFile(Session& s, HWND dialog, const std::string& path) {
  s.ui().Command(dialog, kOpenCommand);
  Popup chooser = s.ui().WaitForPopup(dialog);
  // Explorer-style file dialogs name their file-name box cmb13 or edt1.
  HWND name = GetDlgItem(chooser.hwnd, 0x47C);
  if (!name) name = GetDlgItem(chooser.hwnd, 0x480);
  Expect(name != nullptr, "the open dialog has no file-name box");
  SendMessageA(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
  s.ui().Click(chooser.hwnd, IDOK);
  Expect(s.ui().WaitGone(chooser.hwnd), "the open dialog did not close");
  s.ui().Settle();
}

LRESULT OfferLine(HWND dialog, int id, const std::string& line) {
  return SendMessageA(GetDlgItem(dialog, id), kMsgReadDocumentLine, 0,
                      reinterpret_cast<LPARAM>(line.c_str()));
}

uint32_t ConfigNumber(const Context& context, const std::string& key) {
  std::string value = ConfigValue(ReadFile(ConfigPath(context)), key);
  Expect(value != "<missing>", "configuration lacks " + key);
  return static_cast<uint32_t>(std::stoll(value));
}

// The sample is painted by the dialog's thread; a marker painted over it from
// here survives until the dialog paints the sample again.
constexpr COLORREF kMarker = RGB(255, 0, 255);

void MarkSample(HWND dialog) {
  HWND sample = GetDlgItem(dialog, kSample);
  HDC dc = GetDC(sample);
  RECT r;
  GetClientRect(sample, &r);
  InflateRect(&r, -4, -4);
  HBRUSH brush = CreateSolidBrush(kMarker);
  FillRect(dc, &r, brush);
  DeleteObject(brush);
  GdiFlush();
  ReleaseDC(sample, dc);
}

bool SampleMarked(HWND dialog) {
  HWND sample = GetDlgItem(dialog, kSample);
  HDC dc = GetDC(sample);
  RECT r;
  GetClientRect(sample, &r);
  COLORREF at = GetPixel(dc, r.right / 2, r.bottom / 2);
  ReleaseDC(sample, dc);
  return at == kMarker;
}

// Runs `change` and expects the sample to be painted again because of it.
void ExpectSampleRedraws(Session& s, HWND dialog, const std::function<void()>& change,
                         const std::string& what) {
  s.ui().Settle();
  MarkSample(dialog);
  Expect(SampleMarked(dialog), "cannot mark the sample to see it redraw");
  change();
  s.ui().Settle();
  Expect(Eventually([&] { return !SampleMarked(dialog); }, 5000), what + " did not redraw the sample");
}

// A click as the mouse makes it: press and release at one client point.
void ClickAt(HWND control, int x, int y) {
  PostMessageA(control, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(x, y));
  PostMessageA(control, WM_LBUTTONUP, 0, MAKELPARAM(x, y));
}

POINT SwatchPoint(HWND button) {
  RECT r;
  GetClientRect(button, &r);
  return {4, r.bottom / 2};
}
POINT ArrowPoint(HWND button) {
  RECT r;
  GetClientRect(button, &r);
  return {r.right - 6, r.bottom / 2};
}

BOOL CALLBACK MatchMenuWindow(HWND hwnd, LPARAM found) {
  char name[16] = {};
  GetClassNameA(hwnd, name, sizeof name);
  if (std::strcmp(name, "#32768") != 0 || !IsWindowVisible(hwnd)) return TRUE;
  *reinterpret_cast<HWND*>(found) = hwnd;
  return FALSE;
}

// The visible popup menu of the dialog's thread, or null.
HWND FindMenuWindow(DWORD thread) {
  HWND found = nullptr;
  EnumThreadWindows(thread, &MatchMenuWindow, reinterpret_cast<LPARAM>(&found));
  return found;
}

// Opens a fill button's kind menu with the arrow and returns the checked
// item's position (-1 for none); the menu stays open.
int OpenKindMenu(Session& s, HWND button, HWND& menu_window) {
  POINT arrow = ArrowPoint(button);
  ClickAt(button, arrow.x, arrow.y);
  Expect(Eventually([&] { return (menu_window = FindMenuWindow(s.ui().thread())) != nullptr; }),
         "the arrow showed no kind menu");
  HMENU menu = reinterpret_cast<HMENU>(SendMessageA(menu_window, MN_GETHMENU, 0, 0));
  Expect(menu && GetMenuItemCount(menu) == 4, "the kind menu does not have four items");
  int checked = -1;
  for (int i = 0; i < 4; ++i)
    if (GetMenuState(menu, static_cast<UINT>(i), MF_BYPOSITION) & MF_CHECKED) checked = i;
  char text[32] = {};
  GetMenuStringA(menu, 1, text, sizeof text, MF_BYPOSITION);
  Expect(std::strcmp(text, "Gradient") == 0, std::string("second item \"") + text + "\"");
  return checked;
}

// Keys go to the thread's queue, where the menu's loop reads them.
void PressKey(HWND any_window, UINT key) {
  PostMessageA(any_window, WM_KEYDOWN, key, 1);
  PostMessageA(any_window, WM_KEYUP, key, 0xC0000001);
}

void ChooseGradientFromTheMenu(Session& s, HWND dialog, int expected_checked) {
  HWND button = GetDlgItem(dialog, kBubblesFill);
  HWND menu = nullptr;
  int checked = OpenKindMenu(s, button, menu);
  Expect(checked == expected_checked, "menu checks item " + std::to_string(checked) +
                                          ", expected " + std::to_string(expected_checked));
  PressKey(button, VK_DOWN);  // "Simple"
  PressKey(button, VK_DOWN);  // "Gradient"
  PostMessageA(button, WM_CHAR, '\r', 1);
  Expect(s.ui().WaitGone(menu), "the kind menu stayed open");
  s.ui().Settle();
}

// A run of the configuration that shows `style`'s page, with a document name
// so that Save writes without asking.
void UsePage(const Context& context, int style_number, const std::string& document) {
  UseConfiguration(context, {{"MainEffect", std::to_string(ListIndex(style_number))},
                             {"CurrentFileName", document}});
}

// ---------------------------------------------------------------- picker cases

// A click selects the cell under the mouse: the window text, the document
// line and (when the dialog closes) the setting follow, and the sample is
// drawn again. A document line changes the value but not the text; the
// value still reaches the setting when the picker goes.
void PickerClicks(Context& context) {
  const std::string document = context.folder + "\\pickers.ts1";
  UsePage(context, kHyperspaceNumber, document);
  HostDouble host;
  WithDialog(context, host, [&](Session& s, HWND dialog) {
    HWND four = GetDlgItem(dialog, kHyperspacePicker);
    Expect(four && s.ui().Visible(dialog, kHyperspacePicker), "the Hyperspace picker is not shown");
    RECT r;
    GetClientRect(four, &r);
    Expect(r.right == 75 && r.bottom == 75, "the four-way picker is " + std::to_string(r.right) +
                                                " x " + std::to_string(r.bottom) + " pixels");
    Expect(s.ui().Text(four) == "1", "the picker starts with text \"" + s.ui().Text(four) + "\"");
    ExpectSampleRedraws(s, dialog, [&] { ClickAt(four, 37, 62); }, "a picker click");  // down
    Expect(s.ui().Text(four) == "3", "after the click the text is \"" + s.ui().Text(four) + "\"");
    s.ui().Shot(dialog, "picker_page");

    s.ui().SelectListItem(dialog, kEffectList, ListIndex(kShapedFountainNumber));
    s.ui().Settle();
    HWND two = GetDlgItem(dialog, kShapedFountainPicker);
    GetClientRect(two, &r);
    Expect(r.right == 50 && r.bottom == 25, "the two-way picker has the wrong size");
    ClickAt(two, 12, 12);
    s.ui().Settle();
    s.ui().Shot(dialog, "picker_two_way_page");
    // Wavelet's left column is full: its picker stands under the colours.
    s.ui().SelectListItem(dialog, kEffectList, ListIndex(kWaveletNumber));
    s.ui().Settle();
    s.ui().Shot(dialog, "picker_wavelet_page");
    std::string saved = SaveDocumentNow(s, dialog, document);
    Expect(LineValueIn(saved, "SCRL4D", kHyperspacePicker) == "3", "SCRL4D line " +
           LineValueIn(saved, "SCRL4D", kHyperspacePicker));
    Expect(LineValueIn(saved, "SCRL2D", kShapedFountainPicker) == "0", "SCRL2D line " +
           LineValueIn(saved, "SCRL2D", kShapedFountainPicker));

    Expect(OfferLine(dialog, kHyperspacePicker, "SCRL4D" + std::to_string(kHyperspacePicker) + "=2") == 1,
           "the picker refused its own line");
    Expect(OfferLine(dialog, kHyperspacePicker, "SCRL2D" + std::to_string(kHyperspacePicker) + "=0") == 0,
           "the four-way picker took a two-way line");
    Expect(s.ui().Text(four) == "3", "a document line changed the picker's text");
  });
  Expect(ConfigNumber(context, "Style001Scroll") == 2, "Style001Scroll is not the document's 2");
  Expect(ConfigNumber(context, "Style006Scroll") == 0, "Style006Scroll is not the clicked 0");
  ExpectNoHostProblems(host);
}

// ---------------------------------------------------------------- fill button cases

// The arrow's menu checks the current kind; choosing "Gradient" makes the
// record's kind 1, the setting's top byte 1, and redraws the sample.
void FillKindMenu(Context& context) {
  const std::string document = context.folder + "\\fill_kind.ts1";
  DeleteFileA(FillFile(context, kBubblesFill).c_str());
  UsePage(context, kBubblesNumber, document);
  HostDouble host;
  WithDialog(context, host, [&](Session& s, HWND dialog) {
    ExpectSampleRedraws(s, dialog, [&] { ChooseGradientFromTheMenu(s, dialog, 0); }, "choosing a kind");
    Expect(RecordInDocument(SaveDocumentNow(s, dialog, document), kBubblesFill).kind == kFillGradient,
           "the record's kind is not Gradient");
    HWND menu = nullptr;
    int checked = OpenKindMenu(s, GetDlgItem(dialog, kBubblesFill), menu);
    PressKey(GetDlgItem(dialog, kBubblesFill), VK_ESCAPE);
    Expect(s.ui().WaitGone(menu), "Escape left the kind menu open");
    Expect(checked == 1, "the second showing checks item " + std::to_string(checked));
  });
  Expect(ConfigNumber(context, "Style000FillColor1") >> 24 == kFillGradient,
         "Style000FillColor1's top byte is not 1");
  ExpectNoHostProblems(host);
}

// Expects the fields each gradient type uses to be the enabled ones.
void ExpectFieldsFor(Session& s, HWND box, uint32_t type) {
  const bool rotation = type == kGradientLinear || type == kGradientConical;
  const bool centre = type != kGradientLinear;
  const std::string where = " for type " + std::to_string(type);
  for (int id : {109, 10109}) Expect(s.ui().Enabled(box, id) == rotation, "rotation" + where);
  for (int id : {111, 10111, 115, 113, 10113, 116})
    Expect(s.ui().Enabled(box, id) == centre, "centre control " + std::to_string(id) + where);
}

// A summary of what the preview shows now.
uint64_t PreviewPixels(HWND box) {
  HWND preview = GetDlgItem(box, 105);
  HDC dc = GetDC(preview);
  RECT r;
  GetClientRect(preview, &r);
  uint64_t sum = 1469598103934665603ull;
  for (int y = 2; y < r.bottom - 2; y += 3)
    for (int x = 2; x < r.right - 2; x += 3) sum = (sum ^ GetPixel(dc, x, y)) * 1099511628211ull;
  ReleaseDC(preview, dc);
  return sum;
}

// The editor enables the fields of the chosen type, repaints its preview as
// a field changes, asks the host for colours and help, and leaves every edit
// in the record when it is cancelled.
void GradientEditor(Context& context) {
  const std::string document = context.folder + "\\gradient_editor.ts1";
  UsePage(context, kBubblesNumber, document);
  HostDouble host;
  host.chosen_colour = 0x00336699;
  WithDialog(context, host, [&](Session& s, HWND dialog) {
    HWND button = GetDlgItem(dialog, kBubblesFill);
    PostMessageA(button, WM_COMMAND, 101, 0);  // the menu's "Gradient"
    s.ui().Settle();
    POINT swatch = SwatchPoint(button);
    ClickAt(button, swatch.x, swatch.y);
    HWND box = s.ui().WaitForDialog("Gradient");
    const int type_buttons[] = {101, 102, 103, 104};
    const uint32_t types[] = {kGradientLinear, kGradientSquare, kGradientRadial, kGradientConical};
    for (int i = 0; i < 4; ++i) {
      s.ui().Click(box, type_buttons[i]);
      s.ui().Settle();
      ExpectFieldsFor(s, box, types[i]);
    }
    uint64_t before = PreviewPixels(box);
    s.ui().SetText(box, 111, "40");
    s.ui().SetText(box, 109, "500");  // clamped to 360
    s.ui().Settle();
    Expect(Eventually([&] { return PreviewPixels(box) != before; }, 5000),
           "changing centre X did not change the preview");
    s.ui().Click(box, 106);
    s.ui().Settle();
    s.ui().Shot(box, "gradient_box");
    s.ui().Click(box, 9);
    s.ui().Settle();
    const HostCall* help = host.Last(kHostShowHelp);
    Expect(help && help->text == "ZEPHYRA1.HTML#GRADIENT", "help reference \"" + (help ? help->text : "") + "\"");
    s.ui().Click(box, IDCANCEL);
    Expect(s.ui().WaitGone(box), "Cancel did not close the gradient editor");
    s.ui().Settle();
    FillDescriptor kept = RecordInDocument(SaveDocumentNow(s, dialog, document), kBubblesFill);
    Expect(kept.gradient.grad_type == kGradientConical, "type " + std::to_string(kept.gradient.grad_type));
    Expect(kept.gradient.centre_x == 40, "centre X " + std::to_string(kept.gradient.centre_x));
    Expect(kept.gradient.rotation == 360, "rotation " + std::to_string(kept.gradient.rotation));
    Expect(kept.gradient.grad_start == 0x00336699, "start colour not the host's");
  });
  ExpectNoHostProblems(host);
}

// Every button writes its pattern file when the dialog closes (here by OK,
// elsewhere by Cancel), and the next opening reads it back (the setting
// follows the file); with Shift held the fills start from their defaults,
// which are written back.
void PatternFiles(Context& context) {
  const std::string document = context.folder + "\\pattern_files.ts1";
  const std::string file = FillFile(context, kBubblesFill);
  DeleteFileA(file.c_str());
  UsePage(context, kBubblesNumber, document);
  HostDouble host;
  WithDialog(context, host, [&](Session& s, HWND dialog) {
    PostMessageA(GetDlgItem(dialog, kBubblesFill), WM_COMMAND, 101, 0);
    s.ui().Settle();
    s.ui().Click(dialog, kOkButton);  // builds, then closes: OK saves as Cancel does
    Expect(s.WaitReturned(kBuildTimeoutMs), "OK did not end the dialog");
  });
  std::string bytes = ReadFile(file);
  Expect(bytes.size() == kFillDescriptorSize, "the pattern file has " + std::to_string(bytes.size()) + " bytes");
  Expect(bytes.compare(0, 8, "BRNDFILB") == 0, "the pattern file lacks its magic");
  FillDescriptor written = RecordOf(bytes, "the pattern file");
  Expect(written.kind == kFillGradient, "the pattern file's kind is not Gradient");
  Expect(_stricmp(std::string(FillPath(written)).c_str(), file.c_str()) == 0,
         "the pattern file names \"" + std::string(FillPath(written)) + "\"");

  // A conical gradient put into the file is what the next opening shows.
  written.kind = kFillGradient;
  written.colour = 0x00102030;
  written.gradient.grad_type = kGradientConical;
  written.gradient.rotation = 90;
  FillBytes edited = SerializeFillDescriptor(written);
  WriteFile(file, std::string(edited.begin(), edited.end()));
  UsePage(context, kBubblesNumber, document);
  WithDialog(context, host, [&](Session& s, HWND dialog) {
    FillDescriptor shown = RecordInDocument(SaveDocumentNow(s, dialog, document), kBubblesFill);
    Expect(shown.gradient.grad_type == kGradientConical && shown.gradient.rotation == 90,
           "the button did not read its pattern file");
  });
  Expect(ConfigNumber(context, "Style000FillColor1") == 0x01102030u,
         "the setting does not follow the pattern file");

  HoldShift(true);
  try {
    WithDialog(context, host, [](Session&, HWND) {});
  } catch (...) {
    HoldShift(false);
    throw;
  }
  HoldShift(false);
  FillDescriptor reset = RecordOf(ReadFile(file), "the pattern file after Shift");
  Expect(reset.kind == kFillSimple && reset.gradient.grad_type == kGradientLinear &&
             reset.gradient.grad_start == 0 && reset.gradient.grad_end == 0xFFFFFF,
         "Shift did not reset the fill to its defaults");
  // Shift ignores the configuration file, so the page's colour is what the
  // process's settings hold: the last run's, without the kind.
  Expect(reset.colour == 0x102030, "the reset fill's colour is not the page's");
  Expect(ConfigNumber(context, "Style000FillColor1") == 0x102030, "the setting kept the kind");
  ExpectNoHostProblems(host);
}

// A gradient fill survives a document's save and load; a line keeps the
// button's own path; damaged lines are taken and change nothing; an older
// document's colour line becomes a Simple fill of that colour.
void FillDocumentRoundTrip(Context& context) {
  const std::string document = context.folder + "\\fill_round.ts1";
  const std::string older = context.folder + "\\fill_older.ts1";
  UsePage(context, kBubblesNumber, document);
  HostDouble host;
  std::string line_saved;
  WithDialog(context, host, [&](Session& s, HWND dialog) {
    FillDescriptor gradient = CreateFillDescriptor("C:\\elsewhere\\Fill99999.flp", 0x00445566, false);
    gradient.kind = kFillGradient;
    gradient.gradient = {0x000000FF, 0x0000FF00, kGradientRadial, 0, -25, 15, {}};
    FillBytes bytes = SerializeFillDescriptor(gradient);
    std::string line = "FILLBT" + std::to_string(kBubblesFill) + "=" + HexEncode(bytes);
    Expect(OfferLine(dialog, kBubblesFill, line) == 1, "the fill button refused its own line");
    std::string first = SaveDocumentNow(s, dialog, document);
    FillDescriptor saved = RecordInDocument(first, kBubblesFill);
    Expect(saved.gradient.grad_type == kGradientRadial && saved.gradient.centre_x == -25 &&
               saved.gradient.centre_y == 15 && saved.colour == 0x00445566,
           "the saved line lost the gradient");
    Expect(std::string(FillPath(saved)) == FillFile(context, kBubblesFill),
           "a document chose the pattern file: \"" + std::string(FillPath(saved)) + "\"");
    line_saved = LineValueIn(first, "FILLBT", kBubblesFill);

    Expect(OfferLine(dialog, kBubblesFill, "FILLBT" + std::to_string(kBubblesFill) + "=00FF") == 1,
           "a damaged line was refused");
    Expect(LineValueIn(SaveDocumentNow(s, dialog, document), "FILLBT", kBubblesFill) == line_saved,
           "a damaged line changed the fill");
    PostMessageA(GetDlgItem(dialog, kBubblesFill), WM_COMMAND, 100, 0);  // back to Simple
    s.ui().Settle();
    OpenDocumentFile(s, dialog, document);
    Expect(LineValueIn(SaveDocumentNow(s, dialog, document), "FILLBT", kBubblesFill) == line_saved,
           "the loaded document did not bring the gradient back");
  });

  WriteFile(older, ";This is a document created by Tessarine #1 Plugin by Brindlewood - do not edit.\r\n"
                   ";Start of document\r\nCLRBTN" + std::to_string(kBubblesFill) + "=255\r\n;End of document\r\n");
  UseConfiguration(context, {{"MainEffect", std::to_string(ListIndex(kBubblesNumber))},
                             {"CurrentFileName", older}});
  WithDialog(context, host, [&](Session& s, HWND dialog) {
    OpenDocumentFile(s, dialog, older);
    Expect(s.ui().FindPopup(dialog) == nullptr, "the older document gave a message");
  });
  Expect(ConfigNumber(context, "Style000FillColor1") == 255,
         "the older colour line did not become a Simple fill of that colour");
  FillDescriptor simple = RecordOf(ReadFile(FillFile(context, kBubblesFill)), "the pattern file");
  Expect(simple.kind == kFillSimple && simple.colour == 255, "the pattern file is not the Simple fill");
  Expect(simple.gradient.grad_type == kGradientRadial, "the colour line replaced the gradient");
}

// A page whose five fills are gradients of every type, for the README.
void GradientFillsPage(Context& context) {
  UsePage(context, kBubblesNumber, context.folder + "\\unused.ts1");
  HostDouble host;
  WithDialog(context, host, [&](Session& s, HWND dialog) {
    const GradientRecord looks[] = {
        {0x00FFFFFF, 0x00804000, kGradientLinear, 30, 0, 0, {}},
        {0x0000D0FF, 0x00000080, kGradientRadial, 0, 0, 0, {}},
        {0x00F0F0F0, 0x00306030, kGradientSquare, 0, 0, 0, {}},
        {0x004080FF, 0x00FF8040, kGradientConical, 45, 0, 0, {}},
        {0x00000000, 0x00FFFFFF, kGradientLinear, 90, 0, 0, {}},
    };
    for (int i = 0; i < 5; ++i) {
      const int id = PageControlId(kBubblesNumber, 11 + i);
      FillDescriptor record;
      record.kind = kFillGradient;
      record.gradient = looks[i];
      record.colour = looks[i].grad_start;  // what the effects paint with today
      std::string line = "FILLBT" + std::to_string(id) + "=" + HexEncode(SerializeFillDescriptor(record));
      Expect(OfferLine(dialog, id, line) == 1, "fill " + std::to_string(id) + " refused its line");
    }
    SendMessageA(dialog, kMsgShowPage, 0, 0);  // as a loaded document ends
    s.ui().Settle();
    s.ui().Shot(dialog, "fill_gradient_page");
  });
  // Later runs start from plain colours again.
  for (int i = 0; i < 5; ++i) DeleteFileA(FillFile(context, PageControlId(kBubblesNumber, 11 + i)).c_str());
}

// ---------------------------------------------------------------- table

constexpr TestCase kFillCases[] = {
    {"picker_clicks", &PickerClicks},
    {"fill_kind_menu", &FillKindMenu},
    {"gradient_editor", &GradientEditor},
    {"fill_pattern_files", &PatternFiles},
    {"fill_document_round_trip", &FillDocumentRoundTrip},
    {"gradient_fills_page", &GradientFillsPage},
};

}  // namespace

std::span<const TestCase> FillCases() { return kFillCases; }

}  // namespace tess::testhost
