#pragma once

#include "discovery/module_settings.h"
#include "discovery/usb/usb_printer_source.h"
#include "platform/text_codec.h"
#include "platform/usb_tree.h"

namespace tavira {

/** Lists the USB printers by asking the system, the printers and the hubs. May be used by several threads. */
class CUsbEnumeration final : public IUsbPrinterSource {
 public:
  CUsbEnumeration(IUsbTree& tree, const CModuleSettings& settings, ITextCodec& text)
      : tree_(tree), settings_(settings), text_(text) {}

  std::vector<tagUsbRawEntry> Enumerate() override;

 private:
  void ReadDeviceId(tagUsbRawEntry& entry);
  void ReadIdentityFromHub(tagUsbRawEntry& entry);
  WideString FindHubPath(const WideString& instance_id);

  IUsbTree& tree_;
  const CModuleSettings& settings_;
  ITextCodec& text_;
};

}  // namespace tavira
