// A host that records every service call with a copy of the bytes it was
// given: whole task and image records, texts, and the image an image record
// lends. Results are scripted per command, so tests can refuse a file object
// or the n-th image.
#pragma once

#include <cstring>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "plugin/host_interface.h"

namespace tess::testing {

class FakeHost final : public HostService {
 public:
  struct Received {
    int32_t command = 0;
    HostHandle object = 0;
    intptr_t param = 0;
    HostHandle data = 0;              // the data argument as a value
    std::vector<uint8_t> record;      // task and image records, as many bytes as they declare
    std::string text;                 // comment and status texts
    std::vector<uint8_t> image;       // the packed DIB an image record lent
  };

  std::vector<Received> calls;
  int32_t create_result = 1;
  int refuse_image = -1;  // index among add-image calls to refuse, -1 for none
  int refuse_lend = -1;   // index among lend requests that cannot be met
  int lent = 0;           // images lent and not yet returned
  int lend_requests = 0;

  int32_t Call(HostHandle object, int32_t command, intptr_t param, void* data) override {
    Received c;
    c.command = command;
    c.object = object;
    c.param = param;
    c.data = reinterpret_cast<HostHandle>(data);
    const uint8_t* bytes = static_cast<const uint8_t*>(data);
    switch (command) {
      case kHostCreateTask:
      case kHostCreateTestTask:
        c.record.assign(bytes, bytes + get_u32le(bytes));
        calls.push_back(std::move(c));
        return create_result;
      case kHostAddImage: {
        c.record.assign(bytes, bytes + get_u32le(bytes));
        ImageRecord r;
        std::memcpy(&r, bytes, sizeof r);
        if (const ImageBlock* image = LentImage(r.image))
          c.image.assign(image->data(), image->data() + image->size());
        int index = Count(kHostAddImage);
        calls.push_back(std::move(c));
        return index == refuse_image ? 0 : 1;
      }
      case kHostAddComment:
      case kHostStatusText:
        c.text = static_cast<const char*>(data);
        calls.push_back(std::move(c));
        return 1;
      default:
        calls.push_back(std::move(c));
        return 1;
    }
  }

  HostHandle LendImage(const ImageBlock& image) override {
    if (lend_requests++ == refuse_lend) return 0;
    ++lent;
    return HostService::LendImage(image);
  }
  void ReturnImage(HostHandle) override { --lent; }

  int Count(int32_t command) const {
    int n = 0;
    for (const Received& c : calls) n += c.command == command;
    return n;
  }

  // The file-object commands (1 to 5) in order, without status and progress.
  std::vector<int32_t> TaskCommands() const {
    std::vector<int32_t> out;
    for (const Received& c : calls)
      if (c.command >= kHostCreateTask && c.command <= kHostCreateTestTask)
        out.push_back(c.command);
    return out;
  }

  std::vector<const Received*> Of(int32_t command) const {
    std::vector<const Received*> out;
    for (const Received& c : calls)
      if (c.command == command) out.push_back(&c);
    return out;
  }

  std::vector<std::string> Statuses() const {
    std::vector<std::string> out;
    for (const Received& c : calls)
      if (c.command == kHostStatusText) out.push_back(c.text);
    return out;
  }
};

}  // namespace tess::testing
