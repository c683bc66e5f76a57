// The main dialog. One MainDialog object lives on RunMainDialog's stack for
// the dialog's whole life; its trampoline hands every message to a small
// handler. The dialog keeps no copy of any setting: each control is bound to
// its setting, the build and the sample read the controls, and documents go
// through the controls' own messages.
//
// Sections: set-up · messages · commands · sample · builds · documents ·
// closing · entry point.
#include "shell/win32/main_dialog.h"

#include <windowsx.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "dialog/dialog_pages.h"
#include "dialog/document_names.h"
#include "dialog/sample_view.h"
#include "dialog/settings_document.h"
#include "driver/build_driver.h"
#include "fills/win32/fill_button.h"
#include "fills/win32/picker_control.h"
#include "output/palette.h"
#include "shell/config_file.h"
#include "shell/help.h"
#include "shell/main_dialog_ids.h"
#include "shell/paths.h"
#include "shell/settings.h"
#include "shell/strings.h"
#include "fills/fountain.h"
#include "fills/win32/fountain_control.h"
#include "shell/win32/about_dialog.h"
#include "shell/win32/bound_controls.h"
#include "shell/win32/dialog_document.h"
#include "shell/win32/dialog_reader.h"
#include "platform/win32/dialog_trampoline.h"
#include "shell/win32/emblem_view.h"
#include "shell/win32/host_record_service.h"
#include "platform/win32/image_blit.h"
#include "shell/win32/message_box_reporter.h"
#include "shell/win32/page_builder.h"
#include "platform/win32/win32_handles.h"
#include "styles/style_table.h"

namespace tess {
namespace {

using namespace win32;

constexpr int kMainDialogId = 1000;
constexpr const char* kDialogTitle = "Tessarine #1";

// Where the pages' grid starts, in dialog units (inside the page group box).
constexpr POINT kPageOrigin = {181, 30};

// The Open/Save menu's commands.
constexpr int kOpenCommand = 37;
constexpr int kSaveCommand = 38;
constexpr int kSaveAsCommand = 39;

// A control that was always written at set-up but is not in the template.
constexpr int kAbsentIntervalField = 23;

// Ids from here on are page controls.
constexpr int kFirstPageControlId = 59;
// Ids above this redraw the sample when they change.
constexpr int kLastOutputControlId = 49;

constexpr UINT_PTR kSampleTimer = 15;
constexpr UINT_PTR kEmblemTimer = 17;

// The palette of swatches offered with the host's colour picker.
constexpr int kColourPickerPalette = kPaletteOrtho256;

// ---------------------------------------------------------------- helpers

class HostHelp final : public HelpService {
 public:
  explicit HostHelp(HostService& host) : m_host(host) {}
  bool DisplayHelp(const std::string& reference) override {
    return m_host.Call(0, kHostShowHelp, 0, const_cast<char*>(reference.c_str())) != 0;
  }

 private:
  HostService& m_host;
};

class WaitCursorFrontEnd final : public BuildFrontEnd {
 public:
  void BeginWaitCursor() override { m_previous = SetCursor(LoadCursor(nullptr, IDC_WAIT)); }
  void EndWaitCursor() override { SetCursor(m_previous); }

 private:
  HCURSOR m_previous = nullptr;
};

// A drop-down's choice is made when its list closes up, or when the keyboard
// changes the selection while the list is closed (no close-up follows then).
bool ListChosen(HWND list, UINT code) {
  return code == CBN_CLOSEUP || (code == CBN_SELCHANGE && list && !ComboBox_GetDroppedState(list));
}

void EnableControl(HWND dialog, int id, bool enabled) {
  if (HWND control = GetDlgItem(dialog, id)) EnableWindow(control, enabled);
}

// ---------------------------------------------------------------- the dialog

class MainDialog {
 public:
  MainDialog(HINSTANCE instance, const HostRecord* host)
      : m_instance(instance), m_service(host), m_help(m_service), m_reader(m_controls) {}

  void Attach(HWND hwnd) {
    m_hwnd = hwnd;
    m_reporter.set_owner(hwnd);
    m_reader.set_dialog(hwnd);
  }
  void ReportFailure() { m_reporter.ShowMessage(StringText(kStrMemoryError)); }
  INT_PTR HandleMessage(UINT message, WPARAM wparam, LPARAM lparam);

 private:
  static MainDialog* Self(HWND hwnd) {
    return reinterpret_cast<MainDialog*>(GetWindowLongPtrA(hwnd, DWLP_USER));
  }
  // Cracker-shaped forwarders.
  static BOOL OnInitDialog(HWND hwnd, HWND, LPARAM) { return Self(hwnd)->InitDialog(); }
  static void OnCommand(HWND hwnd, int id, HWND control, UINT code) {
    Self(hwnd)->Command(id, control, code);
  }
  static void OnTimer(HWND hwnd, UINT id) { Self(hwnd)->Tick(id); }
  static void OnDrawItem(HWND hwnd, const DRAWITEMSTRUCT* item) { Self(hwnd)->DrawItem(*item); }
  static void OnDestroy(HWND hwnd) { Self(hwnd)->Closing(); }
  static void OnNCDestroy(HWND hwnd) { Self(hwnd)->Closed(); }

  // Set-up, in the order the steps depend on each other.
  BOOL InitDialog();
  void ReadConfiguration();
  void ApplyTrueColourCapability();
  void ResetDocumentNameOnShift();
  void BindCheckBoxes();
  void BindDelay();
  void FillPaletteList();
  void ApplyDelayCapability();
  bool CreatePages();
  void ResetBuiltInFountains();
  void SelectEffect();
  void StartEmblem();
  void CentreOnScreen();
  template <class Control, class... Args>
  Control* Bind(int id, Args&&... args);
  void Abandon(int message_id);

  // Messages.
  void ShowSelectedPage();
  void SwitchPage(int index);
  void Command(int id, HWND control, UINT code);
  void PageCommand(HWND control, int id, UINT code);
  void Tick(UINT id);
  void DrawItem(const DRAWITEMSTRUCT& item);

  // Commands.
  void PaletteClosedUp();
  void FollowCustomPalette();
  void EffectClosedUp();
  void PopUpOpenSaveMenu();

  // Sample.
  void RedrawSample();
  void DrawSample(const DRAWITEMSTRUCT& item);
  const StyleEntry* SelectedStyle() const;

  // Builds and host requests.
  void Build(BuildMode mode);
  bool ChooseColour(HWND owner, Colour& colour);
  void ShowHelpFor(HWND owner, std::string_view anchor);

  // Documents.
  void OpenDocument();
  void SaveDocumentToCurrentName();
  void SaveDocumentAs();

  void Closing();
  void Closed();

  BoundControl* BoundFor(HWND control) const;
  const PageControl& Declared(int id) const;

  HINSTANCE m_instance;
  HWND m_hwnd = nullptr;
  HostRecordService m_service;
  HostHelp m_help;
  MessageBoxReporter m_reporter;
  Platform& m_platform = SystemPlatform();
  Settings& m_settings = ProcessSettings();
  Random m_random;
  std::vector<std::unique_ptr<BoundControl>> m_controls;
  DialogParamReader m_reader;
  // "&Custom palette" and the transparent background (control 35, which the
  // template leaves out) have no configuration key: the dialog holds them.
  int32_t m_custom_palette = 0;
  int32_t m_transparent_background = 0;
  SpinControl* m_delay = nullptr;  // its range follows the host
  FountainEnvironment m_fountains;  // what every fountain button reaches
  Timer m_sample_timer;
  Timer m_emblem_timer;
  // The composed sample, kept until something it shows changes, so that
  // uncovering the dialog does not render the effect again.
  SampleRender m_sample;
  bool m_sample_stale = true;
  // Edits made while the dialog sets its controls up are not the person's.
  bool m_ready = false;
  // The page on screen; -1 before the first is shown (all are made hidden).
  int m_shown_page = -1;
};

// ---------------------------------------------------------------- set-up

BOOL MainDialog::InitDialog() {
  ReadConfiguration();
  ApplyTrueColourCapability();
  if (!m_service.HasServiceFunction()) {
    Abandon(kStrInternalError);
    return TRUE;
  }
  ResetDocumentNameOnShift();
  BindCheckBoxes();
  BindDelay();
  FillPaletteList();
  ApplyDelayCapability();
  if (!CreatePages()) {
    Abandon(kStrPluginNotInitialized);
    return TRUE;
  }
  ResetBuiltInFountains();
  SelectEffect();
  SetFocus(GetDlgItem(m_hwnd, kOkButton));
  PostMessageA(m_hwnd, WM_COMMAND, MAKEWPARAM(kCustomPalette, BN_CLICKED),
               reinterpret_cast<LPARAM>(GetDlgItem(m_hwnd, kCustomPalette)));
  StartEmblem();
  SetWindowTextA(m_hwnd, kDialogTitle);
  CentreOnScreen();
  PostMessageA(m_hwnd, kMsgShowPage, 0, 0);
  m_ready = true;
  return FALSE;  // the focus is set
}

void MainDialog::ReadConfiguration() {
  ReadSettings(ConfigFilePath(m_platform), m_settings, m_platform);
  // The product's writers never make folders: the preview files, pattern
  // files and the configuration all find theirs ready.
  std::string folder = AppDataPath(m_platform, kPluginFolder);
  if (!folder.empty()) EnsureFolderExists(folder);
}

void MainDialog::ApplyTrueColourCapability() {
  if (m_service.Capabilities() & kHostCapTrueColour) return;
  m_settings.SetNumber(Key::Truecolour, 0);
  CheckDlgButton(m_hwnd, kTrueColour, BST_UNCHECKED);
  EnableControl(m_hwnd, kTrueColour, false);
}

void MainDialog::ResetDocumentNameOnShift() {
  if (m_platform.ShiftDown())
    m_settings.SetText(Key::CurrentFileName, DocumentsPath(m_platform, kUntitledDocumentName));
}

// The declaration of one of the dialog's own controls; the transparent
// background box, which takes no part in documents, is a plain check box.
const PageControl& MainDialog::Declared(int id) const {
  static constexpr PageControl kCheckBox{0, ControlKind::kCheck, nullptr, nullptr, {}, {}, 0, 0, 0, 0};
  for (const PageControl& c : MainDialogControls(m_service.Capabilities()))
    if (c.id == id) return c;
  return kCheckBox;
}

template <class Control, class... Args>
Control* MainDialog::Bind(int id, Args&&... args) {
  HWND hwnd = GetDlgItem(m_hwnd, id);
  if (!hwnd) return nullptr;  // control 35: set and bound in name only
  auto control = std::make_unique<Control>(m_reporter, Declared(id), std::forward<Args>(args)...);
  if (!control->Attach(hwnd)) return nullptr;
  Control* bound = control.get();
  m_controls.push_back(std::move(control));
  return bound;
}

void MainDialog::BindCheckBoxes() {
  auto slot = [&](Key key) { return m_settings.NumberSlot(KeyIndex(key)); };
  Bind<CheckBoxControl>(kTrueColour, slot(Key::Truecolour));
  Bind<CheckBoxControl>(kDither, slot(Key::MainDither));
  Bind<CheckBoxControl>(kCustomPalette, &m_custom_palette);
  Bind<CheckBoxControl>(kSupercompress, slot(Key::MainSupercompress));
  Bind<CheckBoxControl>(kAddComment, slot(Key::AddDescriptiveCommentBlock));
  Bind<CheckBoxControl>(kMaskBackground, slot(Key::MainMaskBackground));
  Bind<CheckBoxControl>(kTransparentBackground, &m_transparent_background);
}

// Until the host's capabilities set it, the Delay's range is the one its
// template gives the up-down.
void MainDialog::BindDelay() {
  HWND updown = GetDlgItem(m_hwnd, kDelayUpDown);
  SpinRange range = ParseSpinText(WindowText(updown));
  SendMessageA(updown, UDM_SETRANGE32, static_cast<WPARAM>(range.min), range.max);
  SendMessageA(updown, UDM_SETPOS32, 0, m_settings.Number(Key::MainDelay));
  SetDlgItemInt(m_hwnd, kDelayEdit, static_cast<UINT>(m_settings.Number(Key::MainDelay)), TRUE);
  m_delay = Bind<SpinControl>(kDelayEdit, m_settings.NumberSlot(KeyIndex(Key::MainDelay)));
  if (m_delay) m_delay->SetRange(range);
}

void MainDialog::FillPaletteList() {
  HWND list = GetDlgItem(m_hwnd, kPaletteList);
  for (std::string_view name : PaletteListItems()) ComboBox_AddString(list, std::string(name).c_str());
  Bind<DropDownControl>(kPaletteList, m_settings.NumberSlot(KeyIndex(Key::MainPalette)));
}

void MainDialog::ApplyDelayCapability() {
  uint32_t capabilities = m_service.Capabilities();
  bool optimises = (capabilities & kHostCapOptimise) != 0;
  SpinRange range = DelayRange(capabilities);
  HWND updown = GetDlgItem(m_hwnd, kDelayUpDown);
  SetWindowTextA(updown, SpinText(range).c_str());
  // The arrows stop where reading the field clamps.
  SendMessageA(updown, UDM_SETRANGE32, static_cast<WPARAM>(range.min), range.max);
  if (m_delay) m_delay->SetRange(range);
  if (!optimises) {
    EnableControl(m_hwnd, kTransparentBackground, false);
    EnableControl(m_hwnd, kSupercompress, false);
  }
  if (m_platform.ShiftDown()) {
    int32_t delay = ShiftResetDelay(capabilities);
    m_settings.SetNumber(Key::MainDelay, delay);
    SetDlgItemInt(m_hwnd, kDelayEdit, static_cast<UINT>(delay), TRUE);
    // Long-standing write to a field no template has had for years; harmless.
    SetDlgItemInt(m_hwnd, kAbsentIntervalField, optimises ? 100 : 1000, TRUE);
  }
}

bool MainDialog::CreatePages() {
  HWND effects = GetDlgItem(m_hwnd, kEffectList);
  ComboBox_ResetContent(effects);
  PageBuildContext context;
  context.dialog = m_hwnd;
  context.instance = m_instance;
  context.font = GetWindowFont(m_hwnd);
  context.origin = kPageOrigin;
  context.settings = &m_settings;
  context.reporter = &m_reporter;
  context.choose_colour = [this](Colour& colour) { return ChooseColour(m_hwnd, colour); };
  context.fill_links.choose_colour = [this](HWND owner, Colour& colour) {
    return ChooseColour(owner, colour);
  };
  context.fill_links.show_help = [this](HWND owner, std::string_view anchor) {
    ShowHelpFor(owner, anchor);
  };
  m_fountains.instance = m_instance;
  m_fountains.platform = &m_platform;
  m_fountains.choose_colour = [this](Colour& colour) { return ChooseColour(m_hwnd, colour); };
  m_fountains.help = &m_help;
  context.fountains = &m_fountains;
  for (const StyleEntry& style : StyleTable()) {
    ComboBox_AddString(effects, style.name);
    if (!CreatePage(context, style, m_controls)) return false;
  }
  return true;
}

// The built-in fountains go into the fountain buttons with the same numbers
// on a first run or with Shift held; each button keeps its own pattern file.
void MainDialog::ResetBuiltInFountains() {
  if (m_settings.Number(Key::FirstRun) == 0 && !m_platform.ShiftDown()) return;
  for (int id : BuiltInFountainIds()) {
    FountainRecord record;
    if (BuiltInFountain(id, record)) SetFountainRecord(GetDlgItem(m_hwnd, id), record);
  }
  m_settings.SetNumber(Key::FirstRun, 0);
}

void MainDialog::SelectEffect() {
  Bind<DropDownControl>(kEffectList, m_settings.NumberSlot(KeyIndex(Key::MainEffect)));
}

void MainDialog::StartEmblem() { m_emblem_timer.Start(m_hwnd, kEmblemTimer, kEmblemPeriod); }

void MainDialog::CentreOnScreen() {
  RECT window, area;
  GetWindowRect(m_hwnd, &window);
  SystemParametersInfoA(SPI_GETWORKAREA, 0, &area, 0);
  int x = area.left + (area.right - area.left - (window.right - window.left)) / 2;
  int y = area.top + (area.bottom - area.top - (window.bottom - window.top)) / 2;
  SetWindowPos(m_hwnd, nullptr, x, y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void MainDialog::Abandon(int message_id) {
  m_reporter.ShowMessage(StringText(message_id));
  PostMessageA(m_hwnd, WM_CLOSE, 0, 0);
}

// ---------------------------------------------------------------- messages

INT_PTR MainDialog::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_INITDIALOG: return HANDLE_WM_INITDIALOG(m_hwnd, wparam, lparam, OnInitDialog);
    case WM_COMMAND: HANDLE_WM_COMMAND(m_hwnd, wparam, lparam, OnCommand); return TRUE;
    case WM_TIMER: HANDLE_WM_TIMER(m_hwnd, wparam, lparam, OnTimer); return TRUE;
    case WM_DRAWITEM: HANDLE_WM_DRAWITEM(m_hwnd, wparam, lparam, OnDrawItem); return TRUE;
    case WM_DESTROY: HANDLE_WM_DESTROY(m_hwnd, wparam, lparam, OnDestroy); return TRUE;
    case WM_NCDESTROY: HANDLE_WM_NCDESTROY(m_hwnd, wparam, lparam, OnNCDestroy); return FALSE;
    case kMsgShowPage: ShowSelectedPage(); return TRUE;
    case kMsgChangeNotice:
      RedrawSample();
      UpdateWindow(GetDlgItem(m_hwnd, kSample));
      return TRUE;
  }
  return FALSE;
}

void MainDialog::ShowSelectedPage() {
  SwitchPage(ClampPageIndex(ComboBox_GetCurSel(GetDlgItem(m_hwnd, kEffectList))));
  RedrawSample();
}

// Every page but the shown one is hidden, so a switch hides one page and
// shows another; index 20 shows none.
void MainDialog::SwitchPage(int index) {
  if (index == m_shown_page) return;
  std::span<const StyleEntry> table = StyleTable();
  SetWindowRedraw(m_hwnd, FALSE);
  if (const StyleEntry* old_page = PageStyle(table, m_shown_page)) ShowPage(m_hwnd, *old_page, false);
  if (const StyleEntry* new_page = PageStyle(table, index)) ShowPage(m_hwnd, *new_page, true);
  m_shown_page = index;
  SetWindowRedraw(m_hwnd, TRUE);
  RedrawWindow(m_hwnd, nullptr, nullptr, RDW_ERASE | RDW_FRAME | RDW_INVALIDATE | RDW_ALLCHILDREN);
}

void MainDialog::Tick(UINT id) {
  if (id == kSampleTimer) {
    m_sample_timer.Stop();
    RedrawSample();
  } else if (id == kEmblemTimer) {
    SendDlgItemMessageA(m_hwnd, kEmblem, kMsgEmblemStep, 0, 0);
  }
}

void MainDialog::DrawItem(const DRAWITEMSTRUCT& item) {
  if (item.CtlID == kSample) {
    DrawSample(item);
    return;
  }
  if (BoundControl* control = BoundFor(item.hwndItem)) control->Draw(item);
}

BoundControl* MainDialog::BoundFor(HWND control) const {
  if (!control) return nullptr;
  for (const auto& bound : m_controls)
    if (bound->hwnd() == control) return bound.get();
  return nullptr;
}

// ---------------------------------------------------------------- commands

void MainDialog::Command(int id, HWND control, UINT code) {
  switch (id) {
    case kOkButton:
      Build(BuildMode::kOk);
      EndDialog(m_hwnd, 1);
      return;
    case kCancelButton: EndDialog(m_hwnd, 0); return;
    case kHelpButton: ShowHelp(&m_help, m_reporter, kHelpAnchorMainDialog); return;
    case kPaletteList:
      if (ListChosen(control, code)) PaletteClosedUp();
      return;
    case kCustomPalette: FollowCustomPalette(); return;
    case kTestButton:
      Build(BuildMode::kTest);
      UpdateWindow(m_hwnd);
      return;
    case kPreviewButton:
      Build(BuildMode::kPreview);
      UpdateWindow(m_hwnd);
      return;
    case kOpenSaveButton: PopUpOpenSaveMenu(); return;
    case kOpenCommand: OpenDocument(); return;
    case kSaveCommand: SaveDocumentToCurrentName(); return;
    case kSaveAsCommand: SaveDocumentAs(); return;
    case kEffectList:
      if (ListChosen(control, code)) EffectClosedUp();
      return;
    case kAboutButton: RunAboutDialog(m_instance, m_hwnd, &m_help, m_reporter); return;
  }
  PageCommand(control, id, code);
}

// Bound controls other than the lists above: the output check boxes and the
// delay field, then every page control. Page controls change nothing while
// the dialog is not on screen.
void MainDialog::PageCommand(HWND control, int id, UINT code) {
  if (!m_ready) return;
  BoundControl* bound = BoundFor(control);
  if (!bound) return;
  if (id >= kFirstPageControlId && !IsWindowVisible(m_hwnd)) return;
  if (!bound->OnCommand(code) || id <= kLastOutputControlId) return;
  if (bound->IsSpinField())
    m_sample_timer.Start(m_hwnd, kSampleTimer,
                         static_cast<UINT>(std::max(m_settings.Number(Key::UpdateDelay), 0)));
  else
    RedrawSample();
}

void MainDialog::PaletteClosedUp() {
  int selection = ComboBox_GetCurSel(GetDlgItem(m_hwnd, kPaletteList));
  m_settings.SetNumber(Key::MainPalette, selection < 0 ? 0 : selection);
}

void MainDialog::FollowCustomPalette() {
  if (BoundControl* bound = BoundFor(GetDlgItem(m_hwnd, kCustomPalette))) bound->OnCommand(BN_CLICKED);
  EnableControl(m_hwnd, kPaletteList, !IsDlgButtonChecked(m_hwnd, kCustomPalette));
}

void MainDialog::EffectClosedUp() {
  int index = ClampPageIndex(ComboBox_GetCurSel(GetDlgItem(m_hwnd, kEffectList)));
  if (index == m_settings.Number(Key::MainEffect)) return;
  SwitchPage(index);
  m_settings.SetNumber(Key::MainEffect, index);
  RedrawSample();
}

void MainDialog::PopUpOpenSaveMenu() {
  PopupMenu menu;
  if (!menu.get()) return;
  AppendMenuA(menu.get(), MF_STRING, kOpenCommand, "Open");
  AppendMenuA(menu.get(), MF_STRING, kSaveCommand, "Save");
  AppendMenuA(menu.get(), MF_STRING, kSaveAsCommand, "Save as...");
  POINT at;
  GetCursorPos(&at);
  TrackPopupMenu(menu.get(), TPM_LEFTALIGN | TPM_TOPALIGN, at.x, at.y, 0, m_hwnd, nullptr);
}

// ---------------------------------------------------------------- sample

void MainDialog::RedrawSample() {
  m_sample_stale = true;
  InvalidateRect(GetDlgItem(m_hwnd, kSample), nullptr, FALSE);
}

const StyleEntry* MainDialog::SelectedStyle() const {
  return PageStyle(StyleTable(), ClampPageIndex(m_settings.Number(Key::MainEffect)));
}

void MainDialog::DrawSample(const DRAWITEMSTRUCT& item) {
  HDC dc = item.hDC;
  RECT frame = item.rcItem;
  FrameRect(dc, &frame, GetSysColorBrush(COLOR_BTNSHADOW));
  RECT inner = frame;
  InflateRect(&inner, -1, -1);
  SavedDc saved(dc);
  IntersectClipRect(dc, inner.left, inner.top, inner.right, inner.bottom);
  int32_t width = inner.right - inner.left, height = inner.bottom - inner.top;
  bool resized = m_sample.picture &&
                 (m_sample.picture.width() != width || m_sample.picture.height() != height);
  if (m_sample_stale || resized) {
    const StyleEntry* style = SelectedStyle();
    m_sample = style ? RenderSample(*style, m_reader, m_random, width, height,
                                    SystemColour(COLOR_3DFACE),
                                    m_settings.Number(Key::SampleWindowKeyLine) != 0)
                     : SampleRender{};
    m_sample_stale = false;
    // An empty sample has no size: the label must not keep the last effect's.
    std::string size = m_sample.picture ? SampleSizeText(m_sample.image_width, m_sample.image_height)
                                        : std::string();
    SetDlgItemTextA(m_hwnd, kSampleSizeLabel, size.c_str());
  }
  if (!m_sample.picture || !BlitImage(dc, inner.left, inner.top, m_sample.picture)) {
    SelectClipRgn(dc, nullptr);
    FillRect(dc, &frame, GetSysColorBrush(COLOR_3DLIGHT));
  }
}

// ---------------------------------------------------------------- builds

void MainDialog::Build(BuildMode mode) {
  WaitCursorFrontEnd wait;
  BuildOptions options;
  options.fast_remap = m_settings.Number(Key::FastRemap) != 0;
  options.dither_brightness = m_settings.Number(Key::DitherBrightness);
  options.dither_contrast = m_settings.Number(Key::DitherContrast);
  options.host_capabilities = m_service.Capabilities();
  BuildContext context{m_reader,
                       StyleTable(),
                       m_random,
                       m_service,
                       reinterpret_cast<HostHandle>(m_hwnd),
                       m_reporter,
                       m_platform,
                       &wait,
                       std::move(options)};
  RunBuild(context, mode);
}

// `owner` is the window the host's chooser belongs to: the dialog, a fill
// button or the gradient editor.
bool MainDialog::ChooseColour(HWND owner, Colour& colour) {
  uint8_t swatches[kPaletteBytes];
  BuildFixedPalette(swatches, nullptr, kColourPickerPalette);
  ColourPickerRecord request = MakeColourPickerRecord();
  request.palette = reinterpret_cast<HostHandle>(swatches);
  request.bits = 24;
  request.colour = colour;
  request.owner = reinterpret_cast<HostHandle>(owner);
  if (m_service.Call(0, kHostChooseColour, 0, &request) == 0) return false;
  colour = request.colour & 0x00FFFFFFu;
  return true;
}

// The fill editors' Help: a failure is told over the editor that asked.
void MainDialog::ShowHelpFor(HWND owner, std::string_view anchor) {
  MessageBoxReporter reporter(owner);
  ShowHelp(&m_help, reporter, anchor);
}

// ---------------------------------------------------------------- documents

void MainDialog::OpenDocument() {
  std::string path;
  if (!ChooseDocumentToOpen(m_hwnd, std::string(m_settings.Text(Key::CurrentFileName)), path)) return;
  DialogDocument document(m_hwnd);
  if (LoadDocument(path, document, m_reporter)) m_settings.SetText(Key::CurrentFileName, path);
}

void MainDialog::SaveDocumentToCurrentName() {
  std::string path(m_settings.Text(Key::CurrentFileName));
  if (IsUntitledDocument(path)) {
    SaveDocumentAs();
    return;
  }
  DialogDocument document(m_hwnd);
  SaveDocument(path, document, m_reporter);
}

void MainDialog::SaveDocumentAs() {
  std::string path;
  if (!ChooseDocumentToSave(m_hwnd, std::string(m_settings.Text(Key::CurrentFileName)), path)) return;
  DialogDocument document(m_hwnd);
  if (SaveDocument(path, document, m_reporter)) m_settings.SetText(Key::CurrentFileName, path);
}

// ---------------------------------------------------------------- closing

void MainDialog::Closing() {
  m_ready = false;
  m_sample_timer.Stop();
  m_emblem_timer.Stop();
  // Subclasses go while their windows still exist.
  m_controls.clear();
}

// Children are destroyed after their dialog's WM_DESTROY: only now has every
// picker written its value back (a value read from a document reaches its
// setting only then) and every fill button saved its pattern file.
void MainDialog::Closed() { WriteSettings(ConfigFilePath(m_platform), m_settings, m_platform); }

}  // namespace

// ---------------------------------------------------------------- entry point

INT_PTR RunMainDialog(HINSTANCE instance, HWND parent, const HostRecord* host) {
  try {
    INITCOMMONCONTROLSEX controls{sizeof controls, ICC_UPDOWN_CLASS | ICC_STANDARD_CLASSES};
    InitCommonControlsEx(&controls);
    // Registered for this run of the dialog only, and gone before the module
    // can be unloaded.
    EmblemClass emblem(instance);
    PickerClasses pickers(instance);
    FillButtonClass fill_buttons(instance);
    FountainClasses fountains(instance);
    MainDialog dialog(instance, host);
    return DialogBoxParamA(instance, MAKEINTRESOURCEA(kMainDialogId), parent,
                           &DialogTrampoline<MainDialog>, reinterpret_cast<LPARAM>(&dialog));
  } catch (...) {
    MessageBoxReporter(parent).ShowMessage(StringText(kStrMemoryError));
    return 0;
  }
}

}  // namespace tess
