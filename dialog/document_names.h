// Names of the main dialog's documents: the untitled default that "Save"
// treats as "Save as...", and the folder the open dialog starts in. Paths are
// taken as they come, with either separator, as Windows accepts both.
#pragma once

#include <string>
#include <string_view>

namespace tess {

// The file name CurrentFileName holds until the person names a document.
inline constexpr std::string_view kUntitledDocumentName = "untitled.ts1";

// True when the path's file name is the untitled default, in any case and in
// any folder: Shift resets the name into the documents folder, and an old
// configuration may hold it elsewhere.
bool IsUntitledDocument(std::string_view path);

// The path up to and including its last separator; empty when it has none.
std::string DocumentFolder(std::string_view path);

}  // namespace tess
