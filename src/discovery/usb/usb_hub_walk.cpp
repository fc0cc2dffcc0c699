#include "discovery/usb/usb_hub_walk.h"

#include <algorithm>
#include <array>

namespace tavira {
namespace {

/**
 * How the service names of hub drivers begin: the system's own first, then those of host controller makers.
 */
constexpr std::array<std::string_view, 10> kHubServices{"usbhub",   "usbhub3", "nusb3hub",  "rusb3hub",
                                                        "flxhcih",  "tihub3",  "etronhub3", "viahub3",
                                                        "asmthub3", "iusb3hub"};

/** Deeper than any bus nests, so that a broken tree cannot keep the walk going. */
constexpr int kMostLevels = 64;

bool IsHubService(const WideString& service, const CModuleSettings& settings, ITextCodec& text) {
  const bool is_known = std::any_of(kHubServices.begin(), kHubServices.end(), [&service](auto name) {
    return StartsWithIgnoringCase(service, WidenAscii(name));
  });
  if (is_known) {
    return true;
  }
  const WideString user_name = settings.UserHubName(text);
  return !user_name.empty() && StartsWithIgnoringCase(service, user_name);
}

}  // namespace

std::optional<tagHubPort> FindHubPort(IUsbTree& tree, const CModuleSettings& settings, ITextCodec& text,
                                      const WideString& instance_id) {
  std::optional<DeviceNode> device = tree.Locate(instance_id);
  for (int level = 0; device && level < kMostLevels; ++level) {
    const std::optional<DeviceNode> parent = tree.Parent(*device);
    if (parent && IsHubService(tree.Service(*parent), settings, text)) {
      return tagHubPort{tree.InstanceId(*parent), tree.Address(*device).value_or(0)};
    }
    device = parent;
  }
  return std::nullopt;
}

}  // namespace tavira
