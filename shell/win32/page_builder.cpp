// Page windows from declarations. Positions are dialog units mapped with the
// dialog's own base units, so pages line up with the template at any font.
#include "shell/win32/page_builder.h"

#include <windowsx.h>

#include <algorithm>
#include <string>

#include "fills/win32/fountain_control.h"
#include "dialog/dialog_pages.h"
#include "fills/picker.h"
#include "fills/win32/fill_button.h"

namespace tess::win32 {
namespace {

// A drop-down's list hangs below its edit: the window is this much taller.
constexpr int kDropDownExtraPixels = 200;

struct WindowTemplate {
  const char* window_class;
  DWORD style;
  DWORD ex_style;
  const char* text;
};

// The window class and styles of each role a page window can have.
WindowTemplate TemplateFor(const PageWindow& w, const std::string& spin_text) {
  const PageControl& c = *w.control;
  switch (w.role) {
    case PageWindowRole::kLabel:
      return {"STATIC", SS_LEFT | SS_CENTERIMAGE | SS_NOPREFIX, 0, c.label};
    case PageWindowRole::kEdit: {
      DWORD digits_only = c.range.min >= 0 ? ES_NUMBER : 0;
      return {"EDIT", ES_AUTOHSCROLL | WS_TABSTOP | digits_only, WS_EX_CLIENTEDGE, ""};
    }
    case PageWindowRole::kUpDown:
      // Placed by us beside its field (no UDS_ALIGNRIGHT): fewer window moves
      // while six hundred windows are made.
      return {UPDOWN_CLASSA, UDS_SETBUDDYINT | UDS_ARROWKEYS | UDS_NOTHOUSANDS, 0,
              spin_text.c_str()};
    case PageWindowRole::kCheckBox:
      return {"BUTTON", BS_AUTOCHECKBOX | WS_TABSTOP, 0, c.label};
    case PageWindowRole::kColourButton:
      return {"BUTTON", BS_OWNERDRAW | WS_TABSTOP, 0, "0"};
    case PageWindowRole::kComboBox:
      return {"COMBOBOX", CBS_DROPDOWNLIST | WS_VSCROLL | WS_TABSTOP, 0, ""};
    case PageWindowRole::kFillButton: return {kFillButtonClassName, 0, 0, ""};
    // Its window text is its value, set when it is initialised.
    case PageWindowRole::kPicker: return {PickerKindOf(c.picker).tag, 0, 0, ""};
    case PageWindowRole::kFountain: return {kFountainControlClassName, WS_TABSTOP, 0, ""};
    case PageWindowRole::kPlaceholder:
      return {"BUTTON", BS_PUSHBUTTON | WS_DISABLED, 0, "Default"};
    case PageWindowRole::kText:
      break;
  }
  return {"STATIC", SS_LEFT | SS_NOPREFIX, 0, c.label};
}

// The pixels a picker's cells cover from its top-left corner.
SIZE PickerPixels(const PickerKind& kind) {
  SIZE size{0, 0};
  for (const PickerCell& cell : kind.cells) {
    size.cx = std::max<LONG>(size.cx, cell.rect.right);
    size.cy = std::max<LONG>(size.cy, cell.rect.bottom);
  }
  return size;
}

// A number field and its up-down share the declared cell: the up-down takes
// a scroll bar's width at its right end. A picker's cells have a fixed size
// in pixels, whatever the font: it is made exactly that size at the declared
// corner (the page leaves it at least that room).
RECT PixelRect(const PageBuildContext& context, const PageWindow& w) {
  RECT r{context.origin.x + w.x, context.origin.y + w.y, context.origin.x + w.x + w.w,
         context.origin.y + w.y + w.h};
  MapDialogRect(context.dialog, &r);
  int arrows = GetSystemMetrics(SM_CXVSCROLL);
  if (w.role == PageWindowRole::kComboBox) r.bottom += kDropDownExtraPixels;
  if (w.role == PageWindowRole::kEdit) r.right -= arrows;
  if (w.role == PageWindowRole::kUpDown) r.left = r.right - arrows;
  if (w.role == PageWindowRole::kPicker) {
    SIZE cells = PickerPixels(PickerKindOf(w.control->picker));
    r.right = r.left + cells.cx;
    r.bottom = r.top + cells.cy;
  }
  return r;
}

HWND CreatePageWindow(const PageBuildContext& context, const PageWindow& w) {
  // The up-down carries its range as text, as up-downs from a template do.
  std::string spin_text = w.role == PageWindowRole::kUpDown ? SpinText(w.control->range) : "";
  WindowTemplate t = TemplateFor(w, spin_text);
  RECT r = PixelRect(context, w);
  HWND hwnd = CreateWindowExA(t.ex_style, t.window_class, t.text ? t.text : "",
                              WS_CHILD | t.style, r.left, r.top, r.right - r.left,
                              r.bottom - r.top, context.dialog,
                              reinterpret_cast<HMENU>(static_cast<INT_PTR>(w.id)), context.instance,
                              nullptr);
  if (!hwnd) return nullptr;
  SetWindowFont(hwnd, context.font, FALSE);
  return hwnd;
}

void FillDropDown(HWND combo, const PageControl& c) {
  for (std::string_view item : c.items) ComboBox_AddString(combo, std::string(item).c_str());
}

void PrepareUpDown(HWND updown, HWND field, const PageControl& c) {
  const SpinRange& range = c.range;
  SendMessageA(updown, UDM_SETBUDDY, reinterpret_cast<WPARAM>(field), 0);
  SendMessageA(updown, UDM_SETRANGE32, static_cast<WPARAM>(range.min), range.max);
}

// The bound control for a declaration, or null when it is stored nowhere
// (fountain and matrix buttons keep their own files). Which class binds is
// the window's: the kind's rules say which window a declaration becomes.
std::unique_ptr<BoundControl> BindingFor(const PageBuildContext& context, const StyleEntry& style,
                                         const PageControl& c) {
  const ControlKindRules& rules = KindRules(c);
  int index = c.key ? StyleKeyIndex(style.number, c.key) : -1;
  if (index < 0 || rules.storage == ControlStorage::kNone) return nullptr;
  Reporter& reporter = *context.reporter;
  if (rules.storage == ControlStorage::kNumberOrText)
    return std::make_unique<SignedSpinControl>(reporter, c, *context.settings, index);
  int32_t* slot = context.settings->NumberSlot(index);
  if (!slot) return nullptr;
  switch (rules.window) {
    case PageWindowRole::kEdit: return std::make_unique<SpinControl>(reporter, c, slot);
    case PageWindowRole::kCheckBox: return std::make_unique<CheckBoxControl>(reporter, c, slot);
    case PageWindowRole::kColourButton:
      return std::make_unique<ColourButtonControl>(reporter, c, slot, context.choose_colour);
    case PageWindowRole::kComboBox: return std::make_unique<DropDownControl>(reporter, c, slot);
    default: return nullptr;
  }
}

// Pickers and fill buttons keep their setting up to date themselves, from
// the address their initialisation hands them; fountain buttons keep their
// own pattern file. False when one could not be initialised (memory).
bool InitialiseOwnWindow(const PageBuildContext& context, const StyleEntry& style,
                         const PageControl& c) {
  HWND hwnd = GetDlgItem(context.dialog, c.id);
  int index = c.key ? StyleKeyIndex(style.number, c.key) : -1;
  int32_t* slot = index >= 0 ? context.settings->NumberSlot(index) : nullptr;
  if (KindRules(c).window == PageWindowRole::kPicker) {
    int32_t value = slot ? ShownValue(c, *slot) : c.range.def;
    SetWindowTextA(hwnd, NumberValueText(value).c_str());
    return SendMessageA(hwnd, kMsgInitControl, static_cast<WPARAM>(static_cast<uint32_t>(value)),
                        reinterpret_cast<LPARAM>(slot)) != 0;
  }
  if (KindRules(c).window == PageWindowRole::kFountain)
    return SendMessageA(hwnd, kMsgInitControl, kFountainClosed,
                        reinterpret_cast<LPARAM>(context.fountains)) != 0;
  FillButtonLinks links = context.fill_links;
  links.setting = slot;
  Colour colour = slot ? static_cast<Colour>(*slot) & 0xFFFFFFu : 0;
  return SendMessageA(hwnd, kMsgInitControl, reinterpret_cast<WPARAM>(&links),
                      static_cast<LPARAM>(colour)) != 0;
}

bool OwnsItsSetting(const PageControl& c) {
  PageWindowRole role = KindRules(c).window;
  return role == PageWindowRole::kPicker || role == PageWindowRole::kFillButton ||
         role == PageWindowRole::kFountain;
}

}  // namespace

bool CreatePage(const PageBuildContext& context, const StyleEntry& style,
                std::vector<std::unique_ptr<BoundControl>>& bound) {
  // New windows go to the end of the dialog's child list, so tab order and
  // document order both follow the page declarations.
  for (const PageWindow& w : PageWindows(style)) {
    HWND hwnd = CreatePageWindow(context, w);
    if (!hwnd) return false;
    if (w.role == PageWindowRole::kComboBox) FillDropDown(hwnd, *w.control);
    // Five-digit seeds fit beside the up-down only with slim margins.
    if (w.role == PageWindowRole::kEdit)
      SendMessageA(hwnd, EM_SETMARGINS, EC_LEFTMARGIN | EC_RIGHTMARGIN, MAKELONG(1, 1));
    if (w.role == PageWindowRole::kUpDown)
      PrepareUpDown(hwnd, GetDlgItem(context.dialog, w.control->id), *w.control);
  }
  // Fields are bound once their up-downs exist: a field reads its range
  // there. A field stored nowhere shows its spin default.
  for (const PageControl& c : style.page) {
    if (OwnsItsSetting(c)) {
      if (!InitialiseOwnWindow(context, style, c)) return false;
      continue;
    }
    std::unique_ptr<BoundControl> control = BindingFor(context, style, c);
    if (!control) {
      if (HWND updown = GetDlgItem(context.dialog, c.id + kUpDownIdOffset))
        SendMessageA(updown, UDM_SETPOS32, 0, c.range.def);
      continue;
    }
    if (!control->Attach(GetDlgItem(context.dialog, c.id))) return false;
    bound.push_back(std::move(control));
  }
  return true;
}

void ShowPage(HWND dialog, const StyleEntry& style, bool shown) {
  for (const PageWindow& w : PageWindows(style))
    if (HWND hwnd = GetDlgItem(dialog, w.id)) ShowWindow(hwnd, shown ? SW_SHOWNA : SW_HIDE);
}

}  // namespace tess::win32
