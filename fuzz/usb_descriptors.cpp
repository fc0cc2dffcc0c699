#include "discovery/usb/usb_descriptors.h"

#include <cstdlib>

namespace {

using namespace tavira;

void Require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

void CheckDeviceId(ByteView answer) {
  const std::string_view device_id = DeviceIdText(answer);
  Require(device_id.size() <= answer.size() && device_id.find('\0') == std::string_view::npos);
  const std::string_view model = ModelOf(device_id);
  Require(model.size() < 256 && model.find(';') == std::string_view::npos);
  if (!model.empty()) {  // closed, within the text, and behind the first "MDL:"
    const auto at = static_cast<std::size_t>(model.data() - device_id.data());
    Require(device_id.find("MDL:") + 4 == at && device_id.at(at + model.size()) == ';');
  }
}

/** The text is exactly what the descriptor's own length says, or nothing. */
void CheckStringDescriptor(ByteView answer) {
  const WideString text = DescriptorText(answer);
  const bool has_content = !text.empty();
  if (has_content) {
    const std::size_t length = answer[usb_layout::kDescriptor];
    Require(text.size() == (length - 2) / 2 && usb_layout::kDescriptor + length <= answer.size());
    Require(DescriptorText(answer.first(usb_layout::kDescriptor + length)) == text);
    Require(DescriptorText(answer.first(usb_layout::kDescriptor + length - 1)).empty());
  }
  const auto language = FirstLanguage(answer);
  Require(language.has_value() == has_content);
  Require(!language || *language == static_cast<std::uint16_t>(text.front()));
}

}  // namespace

// Every parser sees every input: an answer of one kind is a broken one of the others.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const ByteView answer(data, size);
  CheckDeviceId(answer);
  CheckStringDescriptor(answer);
  Require(PortCount(answer) <= 255);
  const auto identity = ReadIdentity(answer);
  Require(identity.has_value() == (size >= 22));
  return 0;
}
