// The build driver. One Build object lives for one call of RunBuild and walks
// the phases in order: prepare, render, adaptive palette, supercompress,
// remap, deliver; or, streaming, the same steps frame by frame. Each phase
// returns false after reporting its one message; the frame list, the
// previous-frame duplicate and the wait cursor are owned by the object or by
// locals, so every exit path releases them.
//
// Sections: settings · messages and host calls · phases · streaming · delivery.
#include "driver/build_driver.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include "image/frame_list.h"
#include "output/gif_preview.h"
#include "output/palette.h"
#include "output/quantize.h"
#include "output/remap.h"
#include "output/supercompress.h"
#include "shell/browser.h"
#include "shell/main_dialog_ids.h"
#include "shell/paths.h"
#include "shell/strings.h"

namespace tess {

// ---------------------------------------------------------------- settings

OutputSettings ReadOutputSettings(const ParamReader& dialog, BuildMode mode, int style_count) {
  OutputSettings s;
  int last = std::max(0, std::min(style_count, kStyleCount) - 1);
  s.effect = std::clamp(dialog.Selection(kEffectList), 0, last);
  s.palette_choice = dialog.Selection(kPaletteList);
  s.delay = dialog.Spin(kDelayEdit);
  s.mask_background = dialog.Checked(kMaskBackground);
  s.true_colour = dialog.Checked(kTrueColour);
  s.custom_palette = dialog.Checked(kCustomPalette);
  s.dither = dialog.Checked(kDither);
  s.supercompress = dialog.Checked(kSupercompress);
  s.transparent_background = dialog.Checked(kTransparentBackground);
  s.add_comment = dialog.Checked(kAddComment);
  if (mode == BuildMode::kPreview) {
    // The browser shows a palettised GIF, and an undithered, whole-frame one
    // is what the person judges the effect by.
    s.true_colour = false;
    s.supercompress = false;
    s.dither = false;
  }
  return s;
}

Colour ResolveOutputSettings(OutputSettings& s, const StyleEntry* style,
                             const ParamReader& dialog) {
  auto query = style ? style->background : nullptr;
  if (query && query(dialog, 1) != 0) s.transparent_background = false;
  if (s.true_colour) s.supercompress = false;
  if (s.supercompress) {
    s.mask_background = false;
    s.transparent_background = false;
  }
  Colour bg = 0;
  if (query) {
    bg = query(dialog, 0);
    if (bg == kNoColour) {
      s.mask_background = false;
      s.transparent_background = false;
    }
  }
  if (s.transparent_background) s.mask_background = true;
  return bg;
}

std::string BuildComment(std::string_view web_address) {
  std::string text =
      "CREATED BY...\r\n"
      "\r\n"
      "This graphic was created by Brindlewood' Marquetry Professional or Filigree and the "
      "Tessarine #1 plugin.\r\n"
      "\r\n"
      "See\r\n"
      "\r\n"
      "    ";
  text += web_address;
  text += "\r\n\r\nfor more information.";
  return text;
}

namespace {

// ---------------------------------------------------------------- messages and host calls

class WaitCursor {
 public:
  explicit WaitCursor(BuildFrontEnd* front_end) : m_front_end(front_end) {
    if (m_front_end) m_front_end->BeginWaitCursor();
  }
  ~WaitCursor() {
    if (m_front_end) m_front_end->EndWaitCursor();
  }
  WaitCursor(const WaitCursor&) = delete;
  WaitCursor& operator=(const WaitCursor&) = delete;

 private:
  BuildFrontEnd* m_front_end;
};

class Build {
 public:
  Build(const BuildContext& context, BuildMode mode) : m_c(context), m_mode(mode) {}
  // Frames made elsewhere take the place of the style's rendering.
  Build(const BuildContext& context, BuildMode mode, FrameList&& frames)
      : m_c(context), m_mode(mode), m_given_frames(true), m_frames(std::move(frames)) {}
  // A file object still open here was left by an exception (a reporter or
  // front end that ran short while a streamed build had one open).
  ~Build() {
    if (m_object != 0) AbandonOutput();
  }
  Build(const Build&) = delete;
  Build& operator=(const Build&) = delete;
  bool Run();

 private:
  bool Fail(int string_id) {
    m_c.reporter.ShowMessage(StringText(string_id));
    return false;
  }
  void Progress(int position, int total) {
    m_c.host.Call(0, kHostProgress, position,
                  reinterpret_cast<void*>(static_cast<intptr_t>(total)));
  }
  void Status(int string_id) {
    m_c.host.Call(0, kHostStatusText, 0, const_cast<char*>(m_strings.Load(string_id)));
  }
  bool AdaptiveWanted() const { return !m_s.true_colour && m_s.custom_palette; }

  // Every frame in memory, phase after phase.
  bool RunAllFrames();
  void Prepare();
  bool Render();
  bool Quantize();
  bool Supercompress();
  bool Remap();
  bool Deliver();

  // One frame at a time.
  bool RunStreamed();
  bool RunGivenStreamed();
  std::unique_ptr<StyleRecord> StartRecord(int* count);
  bool QuantizeFirstPass();
  bool StreamFrames(StyleRecord& record, int count, Remapper& remapper);
  bool StreamFrame(FrameRecord& frame, int k, ImageBlock& previous, Remapper& remapper);
  bool DeliverOrAbandon(const FrameRecord& frame, int k);

  // What both do to the palette and to each frame.
  int PaletteEntries() const;
  void PlaceBackground(int n);
  bool MaskFrame(FrameRecord& frame, int i, ImageBlock& previous);
  bool InitRemapper(Remapper& remapper);
  bool FinishFrame(FrameRecord& frame, int i, Remapper& remapper);
  bool RemapFrame(FrameRecord& frame, int i, Remapper& remapper);

  // Delivery to the host's file object or the preview files. Each reports
  // its own message when it fails.
  bool OpenOutput(int frame_count);
  bool DeliverFrame(const FrameRecord& frame, int i);
  bool CloseOutput();
  void AbandonOutput();

  const BuildContext& m_c;
  BuildMode m_mode;
  StringBuffer m_strings;
  OutputSettings m_s;
  const StyleEntry* m_style = nullptr;
  Colour m_bg = 0;
  uint8_t m_palette[kPaletteBytes] = {};
  int m_colours = 256;
  int m_bits = 8;
  int m_reserved = -1;
  int m_super_index = -1;
  int32_t m_max_width = 0;
  int32_t m_max_height = 0;
  bool m_given_frames = false;
  FrameList m_frames;
  // The open output: the task record is the host's file object handle.
  std::string m_comment;
  TaskRecord m_task = MakeTaskRecord();
  HostHandle m_object = 0;
  PreviewWriter m_preview;
  std::string m_page;
};

bool Build::Run() {
  Prepare();
  if (!m_c.options.stream_frames) return RunAllFrames();
  return m_given_frames ? RunGivenStreamed() : RunStreamed();
}

bool Build::RunAllFrames() {
  if (!Render()) return false;
  if (AdaptiveWanted() && !Quantize()) return false;
  // Unchanged pixels need a palette entry of their own, and only the adaptive
  // palette sets one aside; with a fixed palette there is nothing to mark
  // them with, so the frames are delivered whole.
  if (m_super_index < 0) m_s.supercompress = false;
  if (m_s.supercompress && !Supercompress()) return false;
  if (!Remap()) return false;
  return Deliver();
}

// ---------------------------------------------------------------- phases

void Build::Prepare() {
  int style_count = static_cast<int>(m_c.styles.size());
  m_s = ReadOutputSettings(m_c.dialog, m_mode, style_count);
  m_style = style_count > 0 && !m_given_frames ? &m_c.styles[static_cast<size_t>(m_s.effect)] : nullptr;
  m_bg = ResolveOutputSettings(m_s, m_style, m_c.dialog);
  if (m_given_frames) {
    m_s.mask_background = false;
    m_s.transparent_background = false;
  }
  // Searching only the palette's own entries gives the same picks as all 256:
  // the zero entries past it are black, as entry 0 of every fixed palette is,
  // and ties go to the lower index.
  m_colours = BuildFixedPalette(m_palette, &m_bits, m_s.palette_choice);
  Progress(0, 0);
  Status(kStrStatusBuilding);
}

bool Build::Render() {
  // An effect that is listed but has no renderer yet says so, rather than
  // leaving the user with the empty-animation "Memory error".
  if (m_style && !m_style->init) return Fail(kStrEffectNotAvailable);
  if (m_style) {
    Status(kStrStatusBuilding);
    bool built = StyleBuild(*m_style, m_c.dialog, m_c.random, m_s.delay, m_frames,
                            [this](int k, int n) { Progress(k, n); });
    if (!built) return Fail(kStrMemoryError);
    Progress(0, 0);
  }
  Progress(0, 0);
  if (m_frames.empty()) return Fail(kStrMemoryError);
  if (m_frames.count() == 1) m_s.supercompress = false;
  return true;
}

bool Build::Quantize() {
  int n = PaletteEntries();
  Status(kStrStatusQuantizing);
  if (!AdaptivePalette(&n, m_palette, m_frames)) return Fail(kStrMemoryError);
  PlaceBackground(n);
  return true;
}

// The count the adaptive quantizer is asked for: the dialog's, or under a
// palette limit what is left of it once the reserved index and the exact
// background have theirs. PlaceBackground adds the background below 254
// colours and overwrites an entry from 254 on, so near the top it needs none.
int Build::PaletteEntries() const {
  const int reserved = (m_s.supercompress || m_s.mask_background) ? 1 : 0;
  const int limit = std::min(m_c.options.palette_limit, 256) - reserved;
  const bool background = !m_s.mask_background && !m_given_frames;
  if (!background || limit >= 255) return std::max(1, limit);
  return std::max(1, limit - 1);
}

// The adaptive palette's `n` colours made ready for remapping: the exact
// background, the order, and the entry set aside for masked pixels.
void Build::PlaceBackground(int n) {
  auto put_bg = [this](int index) {
    uint8_t* entry = m_palette + 3 * index;
    entry[0] = ColourRed(m_bg);
    entry[1] = ColourGreen(m_bg);
    entry[2] = ColourBlue(m_bg);
  };
  if (!m_s.mask_background && !m_given_frames) {
    // The background must come out exactly, or the tile shows a seam of
    // near-background pixels where the host or browser fills around it.
    if (n < 254) {
      put_bg(n++);
    } else {
      put_bg(NearestColour(ColourRed(m_bg), ColourGreen(m_bg), ColourBlue(m_bg), m_palette, n));
    }
  }
  SortPaletteByLuminance(m_palette, n, true);
  bool needs_index = m_s.supercompress || m_s.mask_background;
  m_bits = BitsForColours(needs_index ? n + 1 : n);
  m_colours = n;
  m_reserved = n;
  if (m_s.mask_background) put_bg(n);
  if (m_s.supercompress) {
    m_super_index = n;
    put_bg(n);
  }
}

bool Build::Supercompress() {
  Status(kStrStatusSupercompressing);
  int count = m_frames.count();
  ImageBlock previous;
  for (int i = 0; i < count; ++i) {
    Progress(i, count);
    if (!MaskFrame(m_frames[i], i, previous)) return Fail(kStrMemoryError);
  }
  Progress(0, 0);
  return true;
}

// Frame 0 starts the running previous frame; every later one is masked
// against it and brings it up to date.
bool Build::MaskFrame(FrameRecord& frame, int i, ImageBlock& previous) {
  if (i == 0) {
    previous = DuplicateGlobalBlock(frame.image);
    return static_cast<bool>(previous);
  }
  frame.mask = SupercompressMask(frame.image, previous);
  return static_cast<bool>(frame.mask);
}

bool Build::InitRemapper(Remapper& remapper) {
  if (m_s.true_colour) return true;
  RemapOptions options;
  options.fast_remap = m_c.options.fast_remap;
  options.dither_brightness = m_c.options.dither_brightness;
  options.dither_contrast = m_c.options.dither_contrast;
  return remapper.Init(m_palette, m_bits, m_colours, options);
}

bool Build::Remap() {
  Status(kStrStatusRemapping);
  Remapper remapper;
  if (!InitRemapper(remapper)) return Fail(kStrMemoryError);
  int count = m_frames.count();
  for (int i = 0; i < count; ++i) {
    Progress(i, count);
    FrameRecord& frame = m_frames[i];
    if (!FinishFrame(frame, i, remapper)) return Fail(kStrMemoryError);
    m_max_width = std::max(m_max_width, frame.image.width());
    m_max_height = std::max(m_max_height, frame.image.height());
  }
  Progress(0, 0);
  return true;
}

// The frame as the host receives it. False when memory is short.
bool Build::FinishFrame(FrameRecord& frame, int i, Remapper& remapper) {
  if (!m_s.true_colour && !RemapFrame(frame, i, remapper)) return false;
  if (!frame.image) return false;
  if (m_s.transparent_background) frame.transparent = m_reserved;
  return true;
}

// Replaces the frame's true-colour image by its palettised form. In true
// colour there is no spare index (supercompress is off and no adaptive
// palette reserved one), so none of the substitutions can apply there.
bool Build::RemapFrame(FrameRecord& frame, int i, Remapper& remapper) {
  // Without dither the unchanged pixels need no search: the mask is applied
  // as the frame is remapped.
  const bool mask_now = m_s.supercompress && frame.mask && !m_s.dither;
  ImageBlock out = m_s.dither ? remapper.Dither(frame.image)
                   : mask_now ? remapper.Remap(frame.image, frame.mask, m_super_index)
                              : remapper.Remap(frame.image);
  if (!out) return false;
  if (m_s.supercompress && i == 0) {
    out = SubstituteBackground(out, frame.image, m_bg, m_reserved);
    if (!out) return false;
  }
  if (m_s.supercompress && frame.mask) {
    if (!mask_now) ApplySupercompressMask(out, frame.mask, m_super_index);
    frame.transparent = m_super_index;
    // The entry already holds bg when the palette was made; restating it keeps
    // the transparent colour right whatever the remap wrote into the table.
    if (m_super_index < out.colour_table_entries()) {
      uint8_t* entry = out.colour_table() + 4 * m_super_index;
      entry[0] = ColourBlue(m_bg);
      entry[1] = ColourGreen(m_bg);
      entry[2] = ColourRed(m_bg);
    }
  }
  if (m_s.mask_background && m_reserved != -1) {
    out = SubstituteBackground(out, frame.image, m_bg, m_reserved);
    if (!out) return false;
  }
  frame.image = std::move(out);
  return true;
}

bool Build::Deliver() {
  if (!OpenOutput(m_frames.count())) return false;
  for (int i = 0; i < m_frames.count(); ++i) {
    if (!DeliverFrame(m_frames[i], i)) {
      FrameListFree(m_frames);
      AbandonOutput();
      return false;
    }
  }
  return CloseOutput();
}

// ---------------------------------------------------------------- streaming
//
// The phases above, per frame: render, mask against the running previous
// frame, remap, deliver, let go. Only the running previous frame, the frame
// in hand and what the host keeps of it stay in memory. An adaptive palette
// must see every frame before the first can be remapped, so it takes a pass
// of its own over a first rendering; a style renders the same frames from
// the same generator state, so the second rendering is the first again.

bool Build::RunStreamed() {
  if (m_style && !m_style->init) return Fail(kStrEffectNotAvailable);
  const Random start = m_c.random;
  if (AdaptiveWanted()) {
    if (!QuantizeFirstPass()) return false;
    m_c.random = start;
  }
  int count = 0;
  std::unique_ptr<StyleRecord> record = StartRecord(&count);
  if (!record) return false;
  if (m_super_index < 0) m_s.supercompress = false;
  Remapper remapper;
  if (!InitRemapper(remapper)) return Fail(kStrMemoryError);
  return StreamFrames(*record, count, remapper);
}

// Frames the caller already holds, streamed the same way once the palette
// has seen them all: each is masked, remapped, delivered and let go before
// the next, so a host that writes in the background encodes one frame while
// the next is remapped.
bool Build::RunGivenStreamed() {
  if (!Render()) return false;
  if (AdaptiveWanted() && !Quantize()) return false;
  if (m_super_index < 0) m_s.supercompress = false;
  Remapper remapper;
  if (!InitRemapper(remapper)) return Fail(kStrMemoryError);
  const int count = m_frames.count();
  for (int i = 0; i < count; ++i) {
    m_max_width = std::max(m_max_width, m_frames[i].image.width());
    m_max_height = std::max(m_max_height, m_frames[i].image.height());
  }
  if (!OpenOutput(count)) return false;
  Status(kStrStatusRemapping);
  ImageBlock previous;
  for (int i = 0; i < count; ++i) {
    Progress(i, count);
    FrameRecord& frame = m_frames[i];
    if (!StreamFrame(frame, i, previous, remapper)) {
      Fail(kStrMemoryError);
      AbandonOutput();
      return false;
    }
    if (!DeliverOrAbandon(frame, i)) return false;
    frame.image = ImageBlock();
    frame.mask = ImageBlock();
  }
  Progress(0, 0);
  return CloseOutput();
}

// A fresh record and its frame count, as StyleBuild starts one. Null after
// the message when there is none or it has no frames.
std::unique_ptr<StyleRecord> Build::StartRecord(int* count) {
  std::unique_ptr<StyleRecord> record = m_style ? m_style->init(m_c.dialog, m_c.random) : nullptr;
  *count = record ? record->FrameCount() : 0;
  if (*count <= 0) {
    Fail(kStrMemoryError);
    return nullptr;
  }
  if (*count == 1) m_s.supercompress = false;
  return record;
}

bool Build::QuantizeFirstPass() {
  int count = 0;
  std::unique_ptr<StyleRecord> record = StartRecord(&count);
  if (!record) return false;
  Status(kStrStatusQuantizing);
  AdaptivePaletteBuilder palette(PaletteEntries());
  for (int k = 0; k < count; ++k) {
    Progress(k, count);
    ImageBlock frame = record->RenderFrame(k);
    if (!frame || !palette.AddFrame(frame)) return Fail(kStrMemoryError);
  }
  Progress(0, 0);
  int n = 0;
  if (!palette.Finish(&n, m_palette)) return Fail(kStrMemoryError);
  PlaceBackground(n);
  return true;
}

bool Build::StreamFrames(StyleRecord& record, int count, Remapper& remapper) {
  Status(kStrStatusBuilding);
  ImageBlock previous;
  for (int k = 0; k < count; ++k) {
    Progress(k, count);
    FrameRecord frame;
    frame.delay = m_s.delay;
    try {
      // The host's file object may be open: an exception must not pass it.
      frame.image = record.RenderFrame(k);
    } catch (const std::bad_alloc&) {
      frame.image = ImageBlock();
    }
    bool made = frame.image && StreamFrame(frame, k, previous, remapper);
    // A style's frames are all one size; the file object was made for the
    // first frame's, and a larger one could not be shown.
    if (made && k == 0) {
      m_max_width = frame.image.width();
      m_max_height = frame.image.height();
      if (!OpenOutput(count)) return false;
    }
    made = made && frame.image.width() <= m_max_width && frame.image.height() <= m_max_height;
    if (!made) {
      Fail(kStrMemoryError);
      if (k > 0) AbandonOutput();
      return false;
    }
    if (!DeliverOrAbandon(frame, k)) return false;
  }
  Progress(0, 0);
  return CloseOutput();
}

// The per-frame steps of a streamed build: mask against the running previous
// frame, then remap. False when memory is short, exception or not.
bool Build::StreamFrame(FrameRecord& frame, int k, ImageBlock& previous, Remapper& remapper) {
  try {
    return (!m_s.supercompress || MaskFrame(frame, k, previous)) && FinishFrame(frame, k, remapper);
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool Build::DeliverOrAbandon(const FrameRecord& frame, int k) {
  if (DeliverFrame(frame, k)) return true;
  AbandonOutput();
  return false;
}

// ---------------------------------------------------------------- delivery

bool Build::OpenOutput(int frame_count) {
  if (m_mode == BuildMode::kPreview) {
    Platform& platform = m_c.platform;
    std::string folder = m_c.options.preview_folder.empty() ? PluginDataPath(platform, "")
                                                           : m_c.options.preview_folder;
    m_page = m_preview.Open(folder, m_max_width, m_max_height, m_palette, m_bits,
                            platform.PathSeparator());
    return !m_page.empty() || Fail(kStrErrorCreatingFile);
  }
  // Made before the file object exists: nothing may fail between its
  // creation and its closing except the host itself (or, streaming, a frame).
  m_comment = m_s.add_comment ? BuildComment(m_c.options.web_address) : std::string();

  m_task = MakeTaskRecord();
  m_task.owner = m_c.owner_window;
  m_task.width = static_cast<uint32_t>(m_max_width);
  m_task.height = static_cast<uint32_t>(m_max_height);
  m_task.bits = static_cast<uint32_t>(m_bits);
  std::memcpy(m_task.palette, m_palette, kPaletteBytes);
  m_task.frame_count = static_cast<uint32_t>(frame_count);
  if (m_s.transparent_background) m_task.transparent_index = m_reserved;

  int32_t create = m_mode == BuildMode::kTest ? kHostCreateTestTask : kHostCreateTask;
  if (m_c.host.Call(0, create, 0, &m_task) == 0) return Fail(kStrErrorCreatingTask);
  m_object = reinterpret_cast<HostHandle>(&m_task);
  return true;
}

bool Build::DeliverFrame(const FrameRecord& frame, int i) {
  if (m_mode == BuildMode::kPreview) {
    bool thousandths = (m_c.options.host_capabilities & kHostCapTrueColour) != 0;
    int delay = thousandths ? frame.delay / 10 : frame.delay;
    return m_preview.AddFrame(m_s.transparent_background ? 1 : 0, 0, 0, frame.transparent, delay,
                              frame.image) ||
           Fail(kStrErrorWritingFile);
  }
  ImageRecord record = MakeImageRecord();
  record.image = m_c.host.LendImage(frame.image);
  record.transparent = m_s.transparent_background ? 1 : 0;
  record.delay = frame.delay;
  record.frame_number = i;
  record.transparent_index = frame.transparent;
  int32_t added = 0;
  if (record.image != 0) {
    added = m_c.host.Call(m_object, kHostAddImage, 0, &record);
    m_c.host.ReturnImage(record.image);
  }
  return added != 0 || Fail(record.image != 0 ? kStrErrorAddingImage : kStrMemoryError);
}

bool Build::CloseOutput() {
  if (m_mode == BuildMode::kPreview) {
    if (!m_preview.Close()) return Fail(kStrErrorWritingFile);
    OpenGeneratedFile(m_c.platform, m_page, true);
    return true;
  }
  if (m_s.add_comment) m_c.host.Call(m_object, kHostAddComment, 0, m_comment.data());
  m_c.host.Call(m_object, kHostCloseTask, kHostTaskFinished, nullptr);
  m_object = 0;
  return true;
}

// The preview writer deletes its unfinished file when it is destroyed.
void Build::AbandonOutput() {
  if (m_mode == BuildMode::kPreview) return;
  m_c.host.Call(m_object, kHostCloseTask, kHostTaskAbandoned, nullptr);
  m_object = 0;
}

}  // namespace

namespace {

// Both entry points: the wait cursor for the whole build, and the one place an
// exception from the engine's own containers becomes the product's message.
template <class MakeBuild>
bool RunGuarded(const BuildContext& context, MakeBuild make) {
  WaitCursor wait(context.front_end);
  try {
    Build build = make();
    return build.Run();
  } catch (const std::bad_alloc&) {
    // Any file object in the host was abandoned as the build was destroyed.
    context.reporter.ShowMessage(StringText(kStrMemoryError));
    return false;
  }
}

}  // namespace

bool RunBuild(const BuildContext& context, BuildMode mode) {
  return RunGuarded(context, [&] { return Build(context, mode); });
}

bool RunOutputBuild(const BuildContext& context, BuildMode mode, FrameList frames) {
  return RunGuarded(context, [&] { return Build(context, mode, std::move(frames)); });
}

}  // namespace tess
