#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tvmgr {

/** What counts of a rule of Windows' own firewall, as the registry holds it. */
struct tagFirewallRule {
  std::string name;
  std::string program; /**< path, with environment variables in it; empty: every program */
  bool is_active = false;
  bool is_inbound = false;
  bool is_block = false;
  bool is_udp = false;               /**< or every protocol */
  std::vector<std::string> profiles; /**< "Domain", "Private", "Public"; empty: in each of them */
};

/** Reads "v2.30|Action=Block|Active=TRUE|Dir=In|Protocol=17|App=...|Name=...|". What it does not know counts for nothing. */
tagFirewallRule ParseFirewallRule(std::string_view text);

/** True for a rule that holds in one of these profiles. Letter case does not count. */
bool HoldsIn(const tagFirewallRule& rule, const std::vector<std::string>& profiles);

}  // namespace tvmgr
