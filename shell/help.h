// Showing a topic of the product's manual page. The page is opened by the
// host (its help service); when the host cannot, the person is told so and the
// request still counts as handled, so callers never see a failure.
#pragma once

#include <string>
#include <string_view>

#include "base/report.h"

namespace tess {

inline constexpr std::string_view kManualPage = "ZEPHYRA1.HTML";

// The anchor of the manual section behind each dialog's Help button.
inline constexpr std::string_view kHelpAnchorMainDialog = "PREFACE";
inline constexpr std::string_view kHelpAnchorAbout = "ABOUT";
inline constexpr std::string_view kHelpAnchorGradient = "GRADIENT";
inline constexpr std::string_view kHelpAnchorFountain = "FOUNTAIN";
inline constexpr std::string_view kHelpAnchorTexture = "TEXTURE";
inline constexpr std::string_view kHelpAnchorTile = "TILE";

// Whatever can display a help reference: the host's help command on Windows,
// a browser in the command-line host. Must not throw.
class HelpService {
 public:
  virtual ~HelpService() = default;
  // False when the reference could not be shown.
  virtual bool DisplayHelp(const std::string& reference) = 0;
};

// `page`, then "#" and `anchor` unless the anchor is empty.
std::string HelpReference(std::string_view page, std::string_view anchor);

// Hands the reference to `service`; a null service, a refusal or running out
// of memory shows the help error through `reporter`. Returns 1 in every case.
int ShowHelp(HelpService* service, Reporter& reporter, std::string_view anchor,
             std::string_view page = kManualPage);

}  // namespace tess
