#pragma once

#include <cstdint>
#include <optional>

#include "discovery/module_settings.h"
#include "platform/usb_tree.h"

namespace tavira {

/** The place where a device is plugged in. */
struct tagHubPort {
  WideString hub_instance_id;
  std::uint32_t port = 0; /**< from 1; 0 when the bus does not tell it */
};

/**
 * Walks up from a device to the first parent whose driver is a hub's, known or named in Setting.ini. A
 * composite device's parts have its port: it is the last one below the hub.
 */
std::optional<tagHubPort> FindHubPort(IUsbTree& tree, const CModuleSettings& settings, ITextCodec& text,
                                      const WideString& instance_id);

}  // namespace tavira
