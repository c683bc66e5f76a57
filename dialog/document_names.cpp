// Document names of the main dialog.
#include "dialog/document_names.h"

#include <cctype>

namespace tess {
namespace {

size_t NameStart(std::string_view path) {
  size_t separator = path.find_last_of("\\/");
  return separator == std::string_view::npos ? 0 : separator + 1;
}

}  // namespace

bool IsUntitledDocument(std::string_view path) {
  std::string_view name = path.substr(NameStart(path));
  if (name.size() != kUntitledDocumentName.size()) return false;
  for (size_t i = 0; i < name.size(); ++i)
    if (std::tolower(static_cast<unsigned char>(name[i])) != kUntitledDocumentName[i]) return false;
  return true;
}

std::string DocumentFolder(std::string_view path) {
  return std::string(path.substr(0, NameStart(path)));
}

}  // namespace tess
