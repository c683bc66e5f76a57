// Look-ups over the style table for front ends and effects: entries by name and
// style number, page controls by id or key suffix, and the settings key each
// control is stored under. Entries live as long as the process, so the
// pointers returned here never dangle.
#pragma once

#include <string>
#include <string_view>

#include "styles/style.h"

namespace tess {

// The entry with this style number (the NNN of its keys), or null.
const StyleEntry* StyleByNumber(int number);

// The list index (what MainEffect stores) of an entry of the table, or -1.
int StyleListIndex(const StyleEntry& style);

// The control with this id on the entry's page, or null.
const PageControl* FindPageControl(const StyleEntry& style, int id);

struct PageControlRef {
  const StyleEntry* style = nullptr;
  const PageControl* control = nullptr;
};

// The control with this id on any page, with the entry that holds it; both
// null when no page has it.
PageControlRef FindPageControl(int id);

// The control bound to this key suffix (case-insensitive, "width" finds
// Width), or null.
const PageControl* FindPageControlByKey(const StyleEntry& style, std::string_view suffix);

// "Style" + three-digit style number + suffix, e.g. "Style016Glare".
std::string SettingKey(int style_number, std::string_view suffix);
// The key `control` is stored under; empty for a control stored elsewhere
// (fountain and matrix buttons keep their own files).
std::string SettingKey(int style_number, const PageControl& control);

}  // namespace tess
