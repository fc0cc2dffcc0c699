#include "computer/firewall_rule.h"

#include <algorithm>

#include "names/ascii_text.h"

namespace tvmgr {

tagFirewallRule ParseFirewallRule(std::string_view text) {
  tagFirewallRule rule;
  bool has_protocol = false;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('|'), text.size());
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    const std::size_t sign = std::min(word.find('='), word.size());
    const std::string_view key = word.substr(0, sign);
    const std::string_view value = word.substr(std::min(sign + 1, word.size()));
    if (key == "Name") {
      rule.name = value;
    } else if (key == "App") {
      rule.program = value;
    } else if (key == "Active") {
      rule.is_active = value == "TRUE";
    } else if (key == "Dir") {
      rule.is_inbound = value == "In";
    } else if (key == "Action") {
      rule.is_block = value == "Block";
    } else if (key == "Profile") {
      rule.profiles.emplace_back(value);
    } else if (key == "Protocol") {
      has_protocol = true;
      rule.is_udp = value == "17";
    }
  }
  rule.is_udp = rule.is_udp || !has_protocol;
  return rule;
}

bool HoldsIn(const tagFirewallRule& rule, const std::vector<std::string>& profiles) {
  return std::any_of(profiles.begin(), profiles.end(), [&](const std::string& profile) {
    return rule.profiles.empty() ||
           std::any_of(rule.profiles.begin(), rule.profiles.end(),
                       [&](const std::string& named) { return EqualsIgnoreCase(named, profile); });
  });
}

}  // namespace tvmgr
