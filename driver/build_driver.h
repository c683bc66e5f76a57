// The build driver: turns the main dialog's output settings into finished
// frames and delivers them. It renders through the selected style, builds the
// fixed or adaptive palette, optionally marks pixels unchanged from the
// previous frame (supercompression), remaps, and then hands the frames to the
// host as a new file object ("OK", "&Test") or writes the preview files and
// opens the page ("Preview").
//
// A build either keeps every frame until all are ready (the plug-in) or, with
// BuildOptions::stream_frames, streams: each frame is rendered, masked,
// remapped and delivered before the next is rendered, so memory holds a few
// frames whatever their count (the command line's huge jobs). An adaptive
// palette then takes a first pass over the render, which is deterministic,
// and the frames are rendered again. Both give the host the same records.
//
// Invariants: the host sees either 1/5, 2 x N, [3], 4(1) or, after a refused
// image or a failure while streaming, 4(0); without streaming it sees a file
// object only after every frame is ready, so nothing but the host can fail
// while one is open. Every failure is one message through the Reporter and a
// false result; every frame, mask and duplicate is freed on every path.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "base/report.h"
#include "platform/platform.h"
#include "plugin/host_interface.h"
#include "styles/style.h"

namespace tess {

enum class BuildMode : int {
  kOk = 0,       // a new file object in the host
  kTest = 1,     // a trial file object in the host
  kPreview = 2,  // "preview.gif" and "preview.html", opened in a browser
};

// Settings the build needs beyond the dialog's controls.
struct BuildOptions {
  bool fast_remap = false;      // FastRemap
  int32_t dither_brightness = 20;  // DitherBrightness
  int32_t dither_contrast = 20;    // DitherContrast
  // The maker's address, shown in the comment block.
  std::string web_address = "https://www.brindlewood.example/";
  // The host record's capability flags (kHostCapOptimise, kHostCapTrueColour).
  uint32_t host_capabilities = 0;
  // Where "Preview" writes its two files; empty for the plug-in's data folder.
  std::string preview_folder;
  // Deliver each frame as it is made instead of after all are ready.
  bool stream_frames = false;
  // The adaptive palette's entries in all, the exact background's and the
  // transparent index's included (2..256). Below 256 the quantizer is asked
  // for that many fewer colours, trading fidelity for smaller files; at 256
  // it gets the dialog's count.
  int palette_limit = 256;
};

// What the build asks of the front end while it runs. The defaults do
// nothing, which is right for the command line.
class BuildFrontEnd {
 public:
  virtual ~BuildFrontEnd() = default;
  // The system wait cursor from the start of the build until it returns.
  virtual void BeginWaitCursor() {}
  virtual void EndWaitCursor() {}
};

// Everything one build reads and talks to. References must outlive the call.
struct BuildContext {
  const ParamReader& dialog;          // the main dialog's controls, pages included
  std::span<const StyleEntry> styles; // StyleTable() in the product
  Random& random;                     // the process-wide generator
  HostService& host;
  HostHandle owner_window = 0;        // the main dialog, for the task record
  Reporter& reporter;
  Platform& platform;                 // plug-in data folder and opening the page
  BuildFrontEnd* front_end = nullptr;
  BuildOptions options;
};

// The output settings as read from the dialog, before and after resolving the
// options that exclude each other.
struct OutputSettings {
  int effect = 0;  // clamped to the style table
  int palette_choice = 6;
  int32_t delay = 0;
  bool mask_background = false;
  bool true_colour = false;
  bool custom_palette = false;
  bool dither = false;
  bool supercompress = false;
  bool transparent_background = false;
  bool add_comment = false;
};

// Reads the dialog (control ids of shell/main_dialog_ids.h). "Preview" forces
// true colour, supercompress and dither off.
OutputSettings ReadOutputSettings(const ParamReader& dialog, BuildMode mode, int style_count);

// Applies the style's background rules and the exclusions, in the product's
// order, and returns the background colour (0 when the style has no query).
Colour ResolveOutputSettings(OutputSettings& settings, const StyleEntry* style,
                             const ParamReader& dialog);

// The comment block's text, lines joined by CR LF.
std::string BuildComment(std::string_view web_address);

// Runs one build. True on success; false after one message to the reporter.
// Progress is reported per phase; a streamed build reports one phase per pass
// over the frames (the adaptive palette's pass under the quantizing status,
// then the frames under the building status).
bool RunBuild(const BuildContext& context, BuildMode mode);

// The output half of a build for frames made elsewhere (the command line's
// "encode"): palette, supercompression, remapping and delivery run on
// `frames` (true colour, each with its delay) exactly as after a style has
// rendered. The frames are already in memory, so this never streams. No style is asked anything, so there is no background colour to
// make exact in an adaptive palette, to mask or to make transparent.
bool RunOutputBuild(const BuildContext& context, BuildMode mode, FrameList frames);

}  // namespace tess
