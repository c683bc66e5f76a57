// Dialog documents by message, and the file dialogs.
#include "shell/win32/dialog_document.h"

#include <commdlg.h>

#include <cstring>

#include "dialog/document_names.h"
#include "shell/win32/bound_controls.h"

namespace tess::win32 {
namespace {

constexpr char kFilter[] = "TS1 files\0*.TS1\0All files\0*.*\0";
constexpr char kDefaultExtension[] = "TS1";

BOOL CALLBACK SendWriteRequest(HWND child, LPARAM data) {
  SendMessageA(child, kMsgWriteDocumentLine, 0, data);
  return TRUE;
}

// Copies `text` into a zeroed MAX_PATH buffer, cut to fit.
void CopyPath(char (&buffer)[MAX_PATH], const std::string& text) {
  std::memset(buffer, 0, sizeof buffer);
  std::strncpy(buffer, text.c_str(), sizeof buffer - 1);
}

OPENFILENAMEA FileDialog(HWND owner, char (&file)[MAX_PATH]) {
  OPENFILENAMEA ofn{};
  ofn.lStructSize = sizeof ofn;
  ofn.hwndOwner = owner;
  ofn.lpstrFilter = kFilter;
  ofn.nFilterIndex = 1;
  ofn.lpstrFile = file;
  ofn.nMaxFile = MAX_PATH;
  ofn.lpstrDefExt = kDefaultExtension;
  return ofn;
}

}  // namespace

void DialogDocument::ForEachControl(
    const std::function<void(const DocumentControl&)>& visit) const {
  DocumentLineRequest request{&visit};
  EnumChildWindows(m_dialog, &SendWriteRequest, reinterpret_cast<LPARAM>(&request));
}

DocumentControl* DialogDocument::FindControl(int number) {
  HWND child = GetDlgItem(m_dialog, number);
  if (!child) return nullptr;
  // The control tells its tag the way it tells its line: by taking the
  // write request. Windows that do not take part stay silent.
  std::string_view tag, legacy_tag;
  std::function<void(const DocumentControl&)> ask = [&](const DocumentControl& c) {
    tag = c.Tag();
    legacy_tag = c.LegacyTag();
  };
  DocumentLineRequest request{&ask};
  SendMessageA(child, kMsgWriteDocumentLine, 0, reinterpret_cast<LPARAM>(&request));
  if (tag.empty()) return nullptr;
  m_child.Reset(child, number, tag, legacy_tag);
  return &m_child;
}

bool DialogDocument::ChildLine::Forward(std::string_view tag, std::string_view value) {
  std::string line = FormatControlLine(tag, m_number, value);
  return SendMessageA(m_child, kMsgReadDocumentLine, 0, reinterpret_cast<LPARAM>(line.c_str())) != 0;
}

void DialogDocument::DocumentLoaded() { SendMessageA(m_dialog, kMsgShowPage, 0, 0); }

bool ChooseDocumentToOpen(HWND owner, const std::string& current, std::string& chosen) {
  char file[MAX_PATH] = {};
  char folder[MAX_PATH];
  CopyPath(folder, DocumentFolder(current));
  OPENFILENAMEA ofn = FileDialog(owner, file);
  ofn.lpstrInitialDir = folder[0] ? folder : nullptr;
  ofn.Flags = OFN_HIDEREADONLY | OFN_NOCHANGEDIR | OFN_PATHMUSTEXIST | OFN_FILEMUSTEXIST |
              OFN_EXPLORER;
  if (!GetOpenFileNameA(&ofn)) return false;
  chosen = file;
  return true;
}

bool ChooseDocumentToSave(HWND owner, const std::string& current, std::string& chosen) {
  char file[MAX_PATH];
  CopyPath(file, current);
  OPENFILENAMEA ofn = FileDialog(owner, file);
  ofn.Flags = OFN_OVERWRITEPROMPT | OFN_HIDEREADONLY | OFN_NOCHANGEDIR | OFN_EXPLORER;
  if (!GetSaveFileNameA(&ofn)) return false;
  chosen = file;
  return true;
}

}  // namespace tess::win32
