// The preview page and GIF. The page text carries its CR LF pairs itself and
// is written in binary, so the bytes do not depend on the C library's text mode.
#include "output/gif_preview.h"

namespace tess {
namespace {

constexpr char kPageText[] =
    "<html>\r\n"
    "<head>\r\n"
    "<title>Preview</title>\r\n"
    "</head>\r\n"
    "<body background=\"preview.gif\">\r\n"
    "</body>\r\n"
    "</html>";

uint16_t ClampDelay(int delay) {
  return static_cast<uint16_t>(delay < 0 ? 0 : delay > 0xFFFF ? 0xFFFF : delay);
}

}  // namespace

std::string_view PreviewHtmlText() { return {kPageText, sizeof kPageText - 1}; }

uint8_t PreviewControlFlags(int transparent_background, int transparent_index) {
  const int index_bits = transparent_index != -1 ? (transparent_index & 0xFF) : 0;
  return static_cast<uint8_t>(index_bits | (transparent_background == 1 ? 8 : 0));
}

bool PreviewGif::Begin(int width, int height, const uint8_t* rgb_palette, int bits) {
  if (!rgb_palette || bits < 1 || bits > 8) return false;
  GifScreen screen;
  screen.width = width;
  screen.height = height;
  screen.global_table = rgb_palette;
  screen.table_bits = bits;
  return m_writer.WriteHeader(screen) == GifStatus::kOk &&
         m_writer.WriteLoopExtension(0) == GifStatus::kOk;
}

bool PreviewGif::AddFrame(int transparent_background, int left, int top, int transparent_index,
                          int delay, const ImageBlock& image) {
  if (!image || m_writer.state() != GifWriter::State::kBody) return false;
  GifImageDescriptor d;
  d.left = left;
  d.top = top;
  d.width = image.width();
  d.height = image.height();
  d.bits = image.bits();
  // A graphic control block without its frame would break the file, so the
  // frame is checked before anything is written.
  if (m_writer.CheckFrame(d, image) != GifStatus::kOk) return false;

  GifGraphicControl control;
  control.flags = PreviewControlFlags(transparent_background, transparent_index);
  control.delay = ClampDelay(delay);
  control.transparent_index =
      transparent_index != -1 ? static_cast<uint8_t>(transparent_index & 0xFF) : 0xFF;
  if (m_writer.WriteGraphicControl(control) != GifStatus::kOk) return false;
  return m_writer.WriteFrame(d, image) == GifStatus::kOk;
}

bool PreviewGif::Finish() { return m_writer.WriteTrailer() == GifStatus::kOk; }

std::string JoinPath(const std::string& folder, std::string_view name, char separator) {
  std::string path = folder;
  if (!path.empty() && path.back() != separator) path += separator;
  path += name;
  return path;
}

std::string PreviewWriter::Open(const std::string& folder, int width, int height,
                                const uint8_t* rgb_palette, int bits, char separator) {
  Abandon();
  m_error.clear();
  const std::string html_path = JoinPath(folder, kPreviewHtmlName, separator);
  const std::string_view page = PreviewHtmlText();
  if (!m_html.Open(html_path) || !m_html.Write(page.data(), page.size()) ||
      !m_file.Open(JoinPath(folder, kPreviewGifName, separator))) {
    Abandon();
    return {};
  }
  m_gif.emplace(m_file);
  if (!m_gif->Begin(width, height, rgb_palette, bits)) {
    Abandon();
    return {};
  }
  return html_path;
}

bool PreviewWriter::AddFrame(int transparent_background, int left, int top, int transparent_index,
                             int delay, const ImageBlock& image) {
  if (!m_gif) return false;
  if (m_gif->AddFrame(transparent_background, left, top, transparent_index, delay, image))
    return true;
  Abandon();
  return false;
}

bool PreviewWriter::Close() {
  if (!m_gif) return false;
  const bool finished = m_gif->Finish();
  m_gif.reset();
  // Both whole on the disk before either is replaced; then the GIF first, so
  // a page in place always has its whole animation beside it.
  if (finished && m_file.Settle() && m_html.Settle() && m_file.Commit() && m_html.Commit()) return true;
  Abandon();
  return false;
}

void PreviewWriter::Abandon() {
  m_gif.reset();
  if (m_error.empty()) m_error = !m_file.error().empty() ? m_file.error() : m_html.error();
  m_file.Abandon();
  m_html.Abandon();
}

}  // namespace tess
