// Cases for the fountain windows, which run in a frame window of the test
// host's own (the plug-in does not place fountain controls yet): the
// control's pattern file, painting and document lines; the fountain dialog's
// marker editor driven with posted mouse and key messages; the library's
// file bytes after adding, dragging and deleting, and what OK and Cancel
// leave in the caller's record. The host's thread pumps the frame while a
// worker thread runs the script, as the dialog cases do with the DLL.
//
// Sections: bench · helpers · cases · table.
#include "host/win32/testhost/fountain_cases.h"

#include <commctrl.h>

#include <atomic>
#include <cstring>
#include <functional>
#include <mutex>
#include <vector>

#include "fills/fountain.h"
#include "fills/fountain_editor.h"
#include "fills/fountain_library.h"
#include "fills/win32/fountain_control.h"
#include "fills/win32/fountain_dialog.h"
#include "fills/win32/fountain_resources.h"
#include "host/win32/testhost/case_files.h"
#include "shell/document.h"
#include "shell/paths.h"
#include "shell/strings.h"

namespace tess::testhost {
namespace {

constexpr int kId = 270;
constexpr const char* kDialogCaption = "Fountain Gradient";
constexpr const char* kLibraryCaption = "Fountain Library";
constexpr UINT kMsgRunOnUi = WM_APP + 7;

// ---------------------------------------------------------------- bench

struct UiCall {
  const std::function<void()>* call;
  std::string failure;
};

BOOL CALLBACK CancelPopup(HWND hwnd, LPARAM found) {
  char name[16] = {};
  GetClassNameA(hwnd, name, sizeof name);
  if (IsWindowVisible(hwnd) && std::strcmp(name, "#32770") == 0) {
    PostMessageA(hwnd, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0);
    *reinterpret_cast<bool*>(found) = true;
  }
  return TRUE;
}

// A frame window on the host's thread holding fountain controls, and the
// environment they are given: a colour chooser that answers `chosen` and
// remembers what it was asked with, and a help service that records.
class Bench final : public HelpService {
 public:
  explicit Bench(Context& context)
      : m_ui(GetCurrentThreadId(), m_marker.hwnd(), context.shots), m_classes(Module()) {
    Expect(static_cast<bool>(m_classes), "the fountain classes did not register");
    WNDCLASSA wc{};
    wc.lpfnWndProc = &FrameProcedure;
    wc.hInstance = Module();
    wc.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
    wc.lpszClassName = "TessFountainBench";
    RegisterClassA(&wc);
    m_frame = CreateWindowExA(0, wc.lpszClassName, "Fountain bench", WS_OVERLAPPEDWINDOW | WS_VISIBLE,
                              40, 40, 420, 200, nullptr, nullptr, Module(), this);
    Expect(m_frame != nullptr, "the bench window was not made");
    m_environment.instance = Module();
    m_environment.help = this;
    m_environment.choose_colour = [this](Colour& colour) {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_asked.push_back(colour);
      colour = chosen;
      return true;
    };
  }
  ~Bench() override {
    if (m_frame) DestroyWindow(m_frame);  // the controls save their files
    UnregisterClassA("TessFountainBench", Module());
  }

  static HINSTANCE Module() { return GetModuleHandleA(nullptr); }

  // On the host's thread, before Run.
  HWND AddControl(int id, uint32_t mode) {
    HWND control = CreateWindowExA(0, win32::kFountainControlClassName, "", WS_CHILD | WS_VISIBLE,
                                   10, 10 + 40 * (id % 3), 200, 32, m_frame,
                                   reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), Module(), nullptr);
    Expect(control && SendMessageA(control, win32::kMsgInitControl, mode,
                                   reinterpret_cast<LPARAM>(&m_environment)) == 1,
           "no initialised fountain control");
    return control;
  }

  // Runs `script` on a worker thread while this thread pumps; afterwards
  // every dialog left open is cancelled. Throws the script's failure.
  void Run(const std::function<void(Bench&)>& script) {
    m_script = &script;
    HANDLE worker = CreateThread(nullptr, 0, &Bench::Worker, this, 0, nullptr);
    Expect(worker != nullptr, "cannot start the worker thread");
    while (MsgWaitForMultipleObjects(1, &worker, FALSE, INFINITE, QS_ALLINPUT) == WAIT_OBJECT_0 + 1) {
      MSG message;
      while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
      }
    }
    CloseHandle(worker);
    if (!m_failure.empty()) Fail(m_failure);
  }

  // From the script: runs `call` on the host's thread, which owns the windows.
  void OnUi(const std::function<void()>& call) {
    UiCall ui_call{&call, {}};
    SendMessageA(m_frame, kMsgRunOnUi, 0, reinterpret_cast<LPARAM>(&ui_call));
    if (!ui_call.failure.empty()) Fail(ui_call.failure);
  }

  FountainRecord Record(HWND control) {
    std::optional<FountainRecord> record;
    OnUi([&] { record = win32::GetFountainRecord(control); });
    Expect(record.has_value(), "the control holds no fountain");
    return *record;
  }

  bool DisplayHelp(const std::string& reference) override {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_help = reference;
    return !refuse_help;
  }
  std::string LastHelp() {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_help;
  }
  std::vector<Colour> Asked() {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_asked;
  }

  Ui& ui() { return m_ui; }
  HWND frame() const { return m_frame; }

  std::atomic<int> commands{0}, last_command_id{0}, notices{0};  // what the frame heard
  std::atomic<Colour> chosen{0x00123456};
  std::atomic<bool> refuse_help{false};

 private:
  static LRESULT CALLBACK FrameProcedure(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_NCCREATE)
      SetWindowLongPtrA(hwnd, GWLP_USERDATA,
                        reinterpret_cast<LONG_PTR>(reinterpret_cast<CREATESTRUCTA*>(lparam)->lpCreateParams));
    auto* bench = reinterpret_cast<Bench*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA));
    if (message == WM_COMMAND && lparam) {
      bench->last_command_id = LOWORD(wparam);
      ++bench->commands;
      return 0;
    }
    if (message == win32::kMsgChangeNotice) ++bench->notices;
    if (message == kMsgRunOnUi) {
      auto* call = reinterpret_cast<UiCall*>(lparam);
      try {
        (*call->call)();
      } catch (const std::exception& failure) {
        call->failure = failure.what();
      }
    }
    return DefWindowProcA(hwnd, message, wparam, lparam);
  }

  static DWORD WINAPI Worker(void* self) {
    auto* bench = static_cast<Bench*>(self);
    try {
      (*bench->m_script)(*bench);
    } catch (const std::exception& failure) {
      bench->m_failure = *failure.what() ? failure.what() : "failed";
    }
    // Cancel every dialog and message box until none is left.
    for (DWORD start = GetTickCount();; Sleep(100)) {
      bool found = false;
      EnumThreadWindows(bench->m_ui.thread(), &CancelPopup, reinterpret_cast<LPARAM>(&found));
      if (!found) return 0;
      if (GetTickCount() - start > 20000) {
        std::printf("FAIL fountain: a fountain window could not be closed; giving up\n");
        std::fflush(stdout);
        TerminateProcess(GetCurrentProcess(), 3);
      }
    }
  }

  MarkerWindow m_marker;
  Ui m_ui;
  win32::FountainClasses m_classes;
  HWND m_frame = nullptr;
  win32::FountainEnvironment m_environment;
  const std::function<void(Bench&)>* m_script = nullptr;
  std::string m_failure;
  std::mutex m_mutex;
  std::vector<Colour> m_asked;
  std::string m_help;
};

// ---------------------------------------------------------------- helpers

std::string Bytes(const FountainRecord& record) {
  const FountainBytes bytes = SerializeFountainRecord(record);
  return std::string(bytes.begin(), bytes.end());
}

std::string Line(int id, const FountainRecord& record) {
  return "FOUNTN" + std::to_string(id) + "=" + HexEncode(SerializeFountainRecord(record));
}

FountainRecord WithPath(FountainRecord record, const std::string& path, uint32_t mode) {
  SetFountainPath(record, path);
  record.mode = mode;
  return record;
}

FountainRecord Fountain(uint32_t mode, Colour start, std::vector<uint32_t> markers) {
  FountainRecord record;
  record.mode = mode;
  record.start_colour = start;
  record.end_colour = 0xFFFFFF;
  record.markers = {};
  std::copy(markers.begin(), markers.end(), record.markers.begin());
  record.marker_count = static_cast<uint32_t>(markers.size());
  return record;
}

std::string PatternPath(int id) { return FillFilePath(SystemPlatform(), id); }
std::string LibraryPath(uint32_t selector) { return FountainLibraryPath(SystemPlatform(), selector); }

LRESULT Offer(Bench& bench, HWND control, const std::string& line) {
  LRESULT taken = 0;
  bench.OnUi([&] { taken = SendMessageA(control, win32::kMsgReadDocumentLine, 0, reinterpret_cast<LPARAM>(line.c_str())); });
  return taken;
}

// The client area as WM_PRINTCLIENT paints it, as colour values.
std::vector<Colour> PrintedClient(Bench& bench, HWND hwnd, int& width, int& height) {
  std::vector<Colour> pixels;
  bench.OnUi([&] {
    RECT client;
    GetClientRect(hwnd, &client);
    width = client.right;
    height = client.bottom;
    BITMAPINFO info{};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    HDC dc = CreateCompatibleDC(nullptr);
    HBITMAP bitmap = CreateDIBSection(dc, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    HGDIOBJ previous = SelectObject(dc, bitmap);
    SendMessageA(hwnd, WM_PRINTCLIENT, reinterpret_cast<WPARAM>(dc), PRF_CLIENT);
    GdiFlush();
    const auto* bgra = static_cast<const uint8_t*>(bits);
    for (int i = 0; bgra && i < width * height; ++i)
      pixels.push_back(bgra[4 * i + 2] | bgra[4 * i + 1] << 8 | static_cast<Colour>(bgra[4 * i]) << 16);
    SelectObject(dc, previous);
    DeleteObject(bitmap);
    DeleteDC(dc);
  });
  Expect(!pixels.empty(), "nothing was printed");
  return pixels;
}

LPARAM At(POINT p) { return MAKELPARAM(p.x, p.y); }

void Press(Bench& bench, HWND hwnd, POINT p) {
  PostMessageA(hwnd, WM_LBUTTONDOWN, MK_LBUTTON, At(p));
  PostMessageA(hwnd, WM_LBUTTONUP, 0, At(p));
  bench.ui().Settle();
}

void Drag(Bench& bench, HWND hwnd, POINT from, POINT to) {
  PostMessageA(hwnd, WM_LBUTTONDOWN, MK_LBUTTON, At(from));
  PostMessageA(hwnd, WM_MOUSEMOVE, MK_LBUTTON, At({(from.x + to.x) / 2, (from.y + to.y) / 2}));
  PostMessageA(hwnd, WM_MOUSEMOVE, MK_LBUTTON, At(to));
  PostMessageA(hwnd, WM_LBUTTONUP, 0, At(to));
  bench.ui().Settle();
}

HWND OpenDialog(Bench& bench, HWND control) {
  Press(bench, control, {5, 5});
  return bench.ui().WaitForDialog(kDialogCaption);
}

void Close(Bench& bench, HWND dialog, int button) {
  bench.ui().Click(dialog, button);
  Expect(bench.ui().WaitGone(dialog), "a fountain dialog did not close");
  bench.ui().Settle();
}

// The editor of a dialog, with the layout its picture is drawn with.
struct EditorView {
  HWND hwnd = nullptr;
  FountainEditorLayout layout;
  POINT InStrip(uint32_t position) const { return {MarkerX(layout, position), layout.handle_bottom - 4}; }
  POINT InBand(uint32_t position) const { return {MarkerX(layout, position), layout.band.top + 8}; }
};

EditorView Editor(HWND dialog) {
  EditorView view{GetDlgItem(dialog, TESS_FOUNTAIN_EDITOR), {}};
  RECT client{};
  GetClientRect(view.hwnd, &client);
  view.layout = FountainEditorLayoutFor(client.right, client.bottom);
  return view;
}

void Command(Bench& bench, const EditorView& editor, int command) {
  PostMessageA(editor.hwnd, WM_COMMAND, MAKEWPARAM(command, 0), 0);
  bench.ui().Settle();
}

void ExpectStatus(Bench& bench, HWND dialog, const std::string& expected, const std::string& after) {
  const std::string status = bench.ui().Text(dialog, TESS_FOUNTAIN_STATUS);
  Expect(status == expected, after + ", the status reads \"" + status + "\", not \"" + expected + "\"");
}

// The message box that comes up over the fountain windows, dismissed.
void ExpectMessage(Bench& bench, int string_id, const std::string& shot = {}) {
  HWND box = bench.ui().WaitForDialog("Message");
  bench.ui().Settle();
  if (!shot.empty()) bench.ui().Shot(box, shot);
  const std::string text = bench.ui().Text(box, 0xFFFF), expected(StringText(string_id));
  Expect(text == expected, "message \"" + text + "\", expected \"" + expected + "\"");
  bench.ui().Dismiss({box, "Message", text});
  bench.ui().Settle();
}

// The library file must hold exactly a header and `expected`, in order.
void ExpectLibrary(uint32_t selector, const std::vector<FountainLibraryEntry>& expected,
                   const std::string& where) {
  const std::string bytes = ReadFile(LibraryPath(selector));
  LibraryHeader header;
  Expect(bytes.size() == kLibraryHeaderSize + expected.size() * kLibraryEntrySize &&
             ReadLibraryHeader(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), header) &&
             header.count == expected.size() && header.selector == selector,
         where + ": the library file's size or header is wrong");
  FountainLibrary library;
  Expect(LoadFountainLibrary(LibraryPath(selector), library), where + ": the library does not load");
  for (size_t i = 0; i < expected.size(); ++i) {
    const FountainLibraryEntry &a = library[i], &b = expected[i];
    Expect(a.marker_count == b.marker_count && a.start_colour == b.start_colour && a.markers == b.markers &&
               a.end_colour == b.end_colour,
           where + ": library entry " + std::to_string(i) + " differs");
  }
}

HWND OpenLibrary(Bench& bench, const EditorView& editor) {
  Command(bench, editor, win32::kCmdManageLibrary);
  return bench.ui().WaitForDialog(kLibraryCaption);
}

POINT ItemCentre(HWND list, int index) {
  RECT r{};
  SendMessageA(list, LB_GETITEMRECT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&r));
  return {(r.left + r.right) / 2, (r.top + r.bottom) / 2};
}

int Selected(HWND list) { return static_cast<int>(SendMessageA(list, LB_GETCURSEL, 0, 0)); }

// ---------------------------------------------------------------- cases

// Initialisation reads the pattern file of the control's id but keeps the
// mode it is given and its own path; with Shift held it reads nothing. The
// control shows exactly the core's picture inside its edge, sunken only
// while it holds the mouse. Destroying it writes its pattern file.
void FountainControlFileAndPaint(Context& context) {
  const std::string path = PatternPath(kId), shift_path = PatternPath(kId + 1);
  const std::string elsewhere = context.folder + "\\elsewhere.flp";
  FountainRecord stored = Fountain(kFountainOpen, 0x102030, {MakeMarker(40, 0x0000FF), MakeMarker(200, 0xFF00)});
  SetFountainPath(stored, elsewhere);
  EnsureFolderExists(AppDataPath(SystemPlatform(), kPluginFolder));
  WriteFile(path, Bytes(stored));
  WriteFile(shift_path, Bytes(stored));
  FountainRecord at_close;
  {
    Bench bench(context);
    HWND control = bench.AddControl(kId, kFountainClosed);
    SetEnvironmentVariableA("TESSARINE_TEST_SHIFT", "1");
    HWND shifted = CreateWindowExA(0, win32::kFountainControlClassName, "", WS_CHILD, 0, 0, 50, 20,
                                   bench.frame(), reinterpret_cast<HMENU>(kId + 1), Bench::Module(), nullptr);
    SendMessageA(shifted, win32::kMsgInitControl, kFountainOpen, 0);  // no environment: the defaults
    SetEnvironmentVariableA("TESSARINE_TEST_SHIFT", nullptr);
    bench.Run([&](Bench& b) {
      const FountainRecord record = b.Record(control);
      Expect(Bytes(record) == Bytes(WithPath(stored, path, kFountainClosed)),
             "the control did not take its file with its own mode and path");
      Expect(Bytes(b.Record(shifted)) == Bytes(WithPath({}, shift_path, kFountainOpen)),
             "with Shift held the file was read");

      int width = 0, height = 0;
      std::vector<Colour> shown = PrintedClient(b, control, width, height);
      ImageBlock picture = RenderFountain(record, width - 4, height - 4);
      for (int y = 0; y < height - 4; ++y)
        for (int x = 0; x < width - 4; ++x)
          if (shown[(y + 2) * width + x + 2] != ImageGetPixel(picture, x, y))
            Fail("pixel (" + std::to_string(x + 2) + ", " + std::to_string(y + 2) + ") is not the core's");
      auto edge = [&] { return PrintedClient(b, control, width, height)[(height / 2) * width]; };
      const Colour raised = edge();
      Expect(raised == (GetSysColor(COLOR_3DHILIGHT) & 0xFFFFFF) || raised == (GetSysColor(COLOR_3DLIGHT) & 0xFFFFFF),
             "the edge is not raised");
      b.ui().Shot(b.frame(), "fountain_control");
      // Pressed: sunken. The capture taken away: raised, and the release
      // that follows opens nothing.
      PostMessageA(control, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(5, 5));
      b.ui().Settle();
      const Colour sunken = edge();
      Expect(sunken == (GetSysColor(COLOR_3DSHADOW) & 0xFFFFFF) || sunken == (GetSysColor(COLOR_3DDKSHADOW) & 0xFFFFFF),
             "the edge is not sunken while pressed");
      PostMessageA(control, WM_CANCELMODE, 0, 0);
      PostMessageA(control, WM_LBUTTONUP, 0, MAKELPARAM(5, 5));
      b.ui().Settle();
      Expect(b.ui().FindPopup(nullptr) == nullptr && edge() == raised, "a press that lost the mouse still counted");
      at_close = b.Record(control);
    });
  }
  Expect(ReadFile(path) == Bytes(at_close), "the pattern file does not hold the control's fountain");
  Expect(ReadFile(shift_path) == Bytes(WithPath({}, shift_path, kFountainOpen)), "the Shift control saved otherwise");
  Expect(!FileExists(elsewhere), "the path inside the file was written");
}

// The FOUNTN line: written as 1,170 digits, read back into every field but
// the path; a line that does not decode is taken and changes nothing; other
// kinds and lines without "=" are refused.
void FountainControlDocumentLines(Context& context) {
  const std::string path = PatternPath(kId), foreign = context.folder + "\\from_document.flp";
  DeleteFileA(path.c_str());
  FountainRecord other = Fountain(kFountainOpen, 0xFF0000, {MakeMarker(10, 0x123456), MakeMarker(90, 0xABCDEF)});
  SetFountainPath(other, foreign);
  {
    Bench bench(context);
    HWND control = bench.AddControl(kId, kFountainClosed);
    bench.Run([&](Bench& b) {
      const FountainRecord original = b.Record(control);
      std::string written;
      std::function<void(const DocumentControl&)> visit = [&](const DocumentControl& c) { written = FormatControlLine(c); };
      win32::DocumentLineRequest request{&visit};
      b.OnUi([&] { SendMessageA(control, win32::kMsgWriteDocumentLine, 0, reinterpret_cast<LPARAM>(&request)); });
      Expect(written == Line(kId, original) && written.size() == 10 + 1170, "the control wrote another line");

      Expect(Offer(b, control, Line(kId, other)) == 1, "the control refused its own line");
      const std::string taken = Bytes(WithPath(other, path, kFountainOpen));
      Expect(Bytes(b.Record(control)) == taken, "the line's fountain was not taken, or its path was");
      Expect(Offer(b, control, "FOUNTN270=" + std::string(1170, 'Z')) == 1 &&
                 Offer(b, control, Line(kId, original).substr(0, 600)) == 1,
             "a line that does not decode was refused");
      Expect(Bytes(b.Record(control)) == taken, "a line that does not decode changed the fountain");
      Expect(Offer(b, control, "CHKBOX270=1") == 0 &&
                 Offer(b, control, "FOUNTN270" + HexEncode(SerializeFountainRecord(original))) == 0,
             "took a check-box line or a line without \"=\"");
      std::string spaced = Line(kId, original);
      spaced.insert(spaced.find('=') + 1, "== ");
      Expect(Offer(b, control, spaced + "\r\n") == 1 && Bytes(b.Record(control)) == Bytes(original),
             "the round trip, with \"=\" and blanks before the value, did not give the fountain back");
      Offer(b, control, Line(kId, other));
    });
  }
  Expect(ReadFile(path) == Bytes(WithPath(other, path, kFountainOpen)), "the pattern file lacks the last line's fountain");
  Expect(!FileExists(foreign), "the path from the document was written");
}

// The dialog edits a copy: Cancel leaves the control's fountain, OK takes
// the edits; the parent hears of every click, and of a change only after
// OK. In the editor: adding by a click (with the colour shown there),
// moving by a drag past another marker and by a key, recolouring by a
// double click and by the start colour button, an exact position from
// "Marker Position", deleting (never the start box, nor an empty place from
// the real context menu), open and closed, and Help.
void FountainDialogEditsMarkers(Context& context) {
  DeleteFileA(PatternPath(kId).c_str());
  const FountainRecord start =
      Fountain(kFountainClosed, 0x000000, {MakeMarker(64, 0x0000FF), MakeMarker(128, 0x00FF00), MakeMarker(192, 0xFF0000)});
  Bench bench(context);
  HWND control = bench.AddControl(kId, kFountainClosed);
  bench.Run([&](Bench& b) {
    const FountainRecord defaults = b.Record(control);
    HWND dialog = OpenDialog(b, control);
    EditorView editor = Editor(dialog);
    ExpectStatus(b, dialog, "7 of 64 markers", "on opening");
    Expect(b.ui().Checked(dialog, TESS_FOUNTAIN_CLOSED) && !b.ui().Enabled(dialog, TESS_FOUNTAIN_END_COLOUR),
           "a closed fountain is not shown closed");
    Press(b, editor.hwnd, editor.InStrip(16));
    ExpectStatus(b, dialog, "Marker 1 of 8, position 16", "after a click on an empty place");
    b.ui().Shot(dialog, "fountain_dialog");
    b.ui().Click(dialog, TESS_FOUNTAIN_HELP);
    b.ui().Settle();
    Expect(b.LastHelp() == "ZEPHYRA1.HTML#FOUNTAIN", "help reference \"" + b.LastHelp() + "\"");
    b.refuse_help = true;
    b.ui().Click(dialog, TESS_FOUNTAIN_HELP);
    ExpectMessage(b, kStrHelpError);
    Close(b, dialog, IDCANCEL);
    Expect(Bytes(b.Record(control)) == Bytes(defaults), "Cancel changed the control's fountain");
    Expect(b.commands == 1 && b.last_command_id == kId && b.notices == 0, "the parent heard wrongly of Cancel");

    Expect(Offer(b, control, Line(kId, start)) == 1, "the setup line was refused");
    dialog = OpenDialog(b, control);
    editor = Editor(dialog);
    Press(b, editor.hwnd, editor.InBand(32));
    const Colour shown_at_32 = *FountainColourAtX(start, editor.layout, editor.InBand(32).x);
    Drag(b, editor.hwnd, editor.InStrip(192), editor.InStrip(100));
    ExpectStatus(b, dialog, "Marker 3 of 4, position 100", "after dragging 192 to 100");
    PostMessageA(editor.hwnd, WM_KEYDOWN, VK_RIGHT, 0);
    b.ui().Settle();
    ExpectStatus(b, dialog, "Marker 3 of 4, position 101", "after Right");
    PostMessageA(editor.hwnd, WM_LBUTTONDBLCLK, MK_LBUTTON, At(editor.InStrip(64)));
    PostMessageA(editor.hwnd, WM_LBUTTONUP, 0, At(editor.InStrip(64)));
    b.ui().Settle();
    b.chosen = 0x00ABCDEF;
    b.ui().Click(dialog, TESS_FOUNTAIN_START_COLOUR);
    b.ui().Settle();
    Expect(b.Asked() == std::vector<Colour>{0x0000FF, 0x000000}, "the chooser was not asked with the current colours");

    Press(b, editor.hwnd, editor.InStrip(128));
    Command(b, editor, win32::kCmdAdjustPosition);
    HWND box = b.ui().WaitForDialog("Marker Position");
    Expect(b.ui().Text(box, TESS_FOUNTAIN_POSITION_EDIT) == "128", "the position box shows another position");
    b.ui().SetText(box, TESS_FOUNTAIN_POSITION_EDIT, "999");
    Close(b, box, IDOK);
    ExpectStatus(b, dialog, "Marker 4 of 4, position 255", "after typing 999 as the position");

    Press(b, editor.hwnd, {editor.layout.start_box.left + 3, editor.layout.start_box.top + 3});
    ExpectStatus(b, dialog, "Start color", "after a click on the start box");
    Command(b, editor, win32::kCmdDeleteMarker);
    ExpectMessage(b, kStrMarkerCannotBeDeleted, "fountain_marker_cannot_be_deleted");
    POINT empty = editor.InBand(230);
    ClientToScreen(editor.hwnd, &empty);
    PostMessageA(editor.hwnd, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(editor.hwnd), At(empty));
    b.ui().Settle();
    ExpectStatus(b, dialog, "4 of 64 markers", "after a menu on an empty place");
    PostMessageA(editor.hwnd, WM_CHAR, 'd', 0);  // "&Delete marker"
    ExpectMessage(b, kStrMarkerCannotBeDeleted);
    Press(b, editor.hwnd, editor.InStrip(101));
    PostMessageA(editor.hwnd, WM_KEYDOWN, VK_DELETE, 0);
    b.ui().Settle();
    ExpectStatus(b, dialog, "3 of 64 markers", "after Delete on a marker");
    b.ui().Click(dialog, TESS_FOUNTAIN_OPEN);
    b.ui().Settle();
    Expect(b.ui().Enabled(dialog, TESS_FOUNTAIN_END_COLOUR), "an open fountain's end color is disabled");
    Close(b, dialog, IDOK);

    Expect(shown_at_32 >= 0x70 && shown_at_32 <= 0x90, "the band does not show about half red at 32");
    FountainRecord expected =
        Fountain(kFountainOpen, 0xABCDEF, {MakeMarker(32, shown_at_32), MakeMarker(64, 0x123456), MakeMarker(255, 0x00FF00)});
    Expect(Bytes(b.Record(control)) == Bytes(WithPath(expected, PatternPath(kId), kFountainOpen)),
           "OK did not leave exactly the edits in the control");
    Expect(b.commands == 2 && b.notices == 1, "OK did not notify the parent");
  });
}

// At 64 markers a click on an empty place says so and adds nothing; after
// one is deleted a click adds again.
void FountainEditorFull(Context& context) {
  DeleteFileA(PatternPath(kId).c_str());
  std::vector<uint32_t> markers;  // 128..191, leaving room either side
  for (uint32_t i = 0; i < kFountainMaxMarkers; ++i) markers.push_back(MakeMarker(128 + i, 0x040404 * i));
  Bench bench(context);
  HWND control = bench.AddControl(kId, kFountainClosed);
  bench.Run([&](Bench& b) {
    Expect(Offer(b, control, Line(kId, Fountain(kFountainClosed, 0, markers))) == 1, "the setup line was refused");
    HWND dialog = OpenDialog(b, control);
    EditorView editor = Editor(dialog);
    Press(b, editor.hwnd, editor.InBand(40));
    ExpectMessage(b, kStrNoMarkerSpace, "fountain_no_marker_space");
    ExpectStatus(b, dialog, "64 of 64 markers", "after the refused click");
    Press(b, editor.hwnd, editor.InStrip(191));
    Command(b, editor, win32::kCmdDeleteMarker);
    ExpectStatus(b, dialog, "63 of 64 markers", "after deleting the last marker");
    Press(b, editor.hwnd, editor.InBand(40));
    Expect(b.ui().FindPopup(dialog) == nullptr, "adding the 64th marker showed a message");
    ExpectStatus(b, dialog, "Marker 1 of 64, position 40", "after adding the 64th");
    Close(b, dialog, IDOK);
    Expect(FountainMarkerCount(b.Record(control)) == 64, "the control did not keep 64 markers");
  });
}

// "Add to library" appends to the library of the fountain's kind; the box
// shows the entries as 42-pixel items and selects the first; drags (with
// their cursors) and deletions change the list, and only OK rewrites the
// file: Cancel discards them and leaves the caller's record, OK copies the
// chosen entry's four fields into it. A missing library and a file that
// cannot be rewritten say so.
void FountainLibrary(Context& context) {
  DeleteFileA(PatternPath(kId).c_str());
  DeleteFileA(LibraryPath(kFountainOpen).c_str());
  DeleteFileA(LibraryPath(kFountainClosed).c_str());
  Bench bench(context);
  HWND control = bench.AddControl(kId, kFountainClosed);
  bench.Run([&](Bench& b) {
    FountainRecord working = b.Record(control);
    HWND dialog = OpenDialog(b, control);
    EditorView editor = Editor(dialog);
    Command(b, editor, win32::kCmdManageLibrary);  // the message comes before the box shows
    ExpectMessage(b, kStrErrorLoadingFountainLibrary);
    HWND box = b.ui().WaitForDialog(kLibraryCaption);
    Expect(SendDlgItemMessageA(box, TESS_FOUNTAIN_LIBRARY_LIST, LB_GETCOUNT, 0, 0) == 0 &&
               !b.ui().Enabled(box, TESS_FOUNTAIN_LIBRARY_DELETE),
           "a missing library lists entries, or Delete is enabled");
    Close(b, box, IDOK);

    std::vector<FountainLibraryEntry> entries;
    for (Colour colour : {0x0000FFu, 0x00FF00u, 0xFF0000u}) {
      b.chosen = colour;
      Press(b, editor.hwnd, editor.InStrip(32));
      Command(b, editor, win32::kCmdChangeColour);
      Command(b, editor, win32::kCmdAddToLibrary);
      working.markers[0] = MakeMarker(32, colour);
      entries.push_back(LibraryEntryOf(working));
    }
    ExpectLibrary(kFountainClosed, entries, "after three additions");
    Expect(!FileExists(LibraryPath(kFountainOpen)), "a closed fountain went to the open library");

    box = OpenLibrary(b, editor);
    HWND list = GetDlgItem(box, TESS_FOUNTAIN_LIBRARY_LIST);
    Expect(SendMessageA(list, LB_GETCOUNT, 0, 0) == 3 && SendMessageA(list, LB_GETITEMHEIGHT, 0, 0) == 42 &&
               Selected(list) == 0 && b.ui().Enabled(box, TESS_FOUNTAIN_LIBRARY_DELETE),
           "the box does not start with three 42-pixel entries, the first selected");
    b.ui().Shot(box, "fountain_library");
    Drag(b, list, ItemCentre(list, 0), ItemCentre(list, 2));  // lands above 2, selects index 2
    Expect(Selected(list) == 2, "the drop did not select index 2");
    ExpectLibrary(kFountainClosed, entries, "the file changed before OK");

    // Outside the list the "no" cursor shows, over it ours; released
    // outside, nothing moves.
    PostMessageA(list, WM_LBUTTONDOWN, MK_LBUTTON, At(ItemCentre(list, 0)));
    PostMessageA(list, WM_MOUSEMOVE, MK_LBUTTON, At({-30, 5}));
    b.ui().Settle();
    CURSORINFO cursor{};
    cursor.cbSize = sizeof cursor;
    const bool no = GetCursorInfo(&cursor) && cursor.hCursor == LoadCursor(nullptr, IDC_NO);
    PostMessageA(list, WM_MOUSEMOVE, MK_LBUTTON, At(ItemCentre(list, 1)));
    b.ui().Settle();
    const bool ours = GetCursorInfo(&cursor) &&
                      cursor.hCursor == LoadCursorA(Bench::Module(), MAKEINTRESOURCEA(TESS_FOUNTAIN_DRAG_CURSOR));
    PostMessageA(list, WM_LBUTTONUP, 0, At({-30, 5}));
    b.ui().Settle();
    Expect(no && ours, "the drag cursors were not shown");

    SendMessageA(list, LB_SETCURSEL, 2, 0);
    b.ui().Click(box, TESS_FOUNTAIN_LIBRARY_DELETE);
    b.ui().Settle();
    Expect(SendMessageA(list, LB_GETCOUNT, 0, 0) == 2 && Selected(list) == 1,
           "deleting the last entry did not leave two, the new last selected");
    Close(b, box, IDCANCEL);
    ExpectLibrary(kFountainClosed, entries, "Cancel wrote the library");
    ExpectStatus(b, dialog, "Marker 1 of 7, position 32", "after Cancel in the library");

    // OK rewrites the file; when that fails it says so and the old file stays.
    box = OpenLibrary(b, editor);
    // A file held open without delete sharing cannot be replaced, so the
    // rewrite fails at its very end.
    HANDLE held = CreateFileA(LibraryPath(kFountainClosed).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                              OPEN_EXISTING, 0, nullptr);
    Expect(held != INVALID_HANDLE_VALUE, "cannot hold the library open");
    b.ui().Click(box, IDOK);
    ExpectMessage(b, kStrErrorUpdatingFountainLibrary);
    Expect(b.ui().WaitGone(box), "the library box did not close after the message");
    if (held != INVALID_HANDLE_VALUE) CloseHandle(held);
    ExpectLibrary(kFountainClosed, entries, "after a failed rewrite");

    // The same moves ended with OK are written, and the chosen entry taken.
    box = OpenLibrary(b, editor);
    list = GetDlgItem(box, TESS_FOUNTAIN_LIBRARY_LIST);
    Drag(b, list, ItemCentre(list, 0), ItemCentre(list, 2));
    SendMessageA(list, LB_SETCURSEL, 2, 0);
    b.ui().Click(box, TESS_FOUNTAIN_LIBRARY_DELETE);
    b.ui().Settle();
    SendMessageA(list, LB_SETCURSEL, 1, 0);  // entries[0], now second
    Close(b, box, IDOK);
    ExpectLibrary(kFountainClosed, {entries[1], entries[0]}, "after OK");
    ExpectStatus(b, dialog, "7 of 64 markers", "after OK in the library");
    b.ui().Click(dialog, TESS_FOUNTAIN_OPEN);
    b.ui().Settle();
    Command(b, editor, win32::kCmdAddToLibrary);
    Close(b, dialog, IDOK);

    FountainRecord expected = WithPath({}, PatternPath(kId), kFountainOpen);
    ApplyLibraryEntry(entries[0], expected);
    Expect(Bytes(b.Record(control)) == Bytes(expected), "OK did not copy exactly the chosen entry");
    ExpectLibrary(kFountainOpen, {LibraryEntryOf(expected)}, "the open library");
  });
}

// ---------------------------------------------------------------- table

constexpr TestCase kFountainCases[] = {
    {"fountain_control_file_and_paint", &FountainControlFileAndPaint},
    {"fountain_control_document_lines", &FountainControlDocumentLines},
    {"fountain_dialog_edits_markers", &FountainDialogEditsMarkers},
    {"fountain_editor_full", &FountainEditorFull},
    {"fountain_library", &FountainLibrary},
};

}  // namespace

std::span<const TestCase> FountainCases() { return kFountainCases; }

}  // namespace tess::testhost
