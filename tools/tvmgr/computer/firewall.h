#pragma once

#include <string>
#include <vector>

namespace tvmgr {

/** What the registry says of Windows' own firewall. Firewalls of other makers are not seen. */
struct tagFirewallFacts {
  bool is_known = false;             /**< there is such a firewall */
  std::vector<std::string> profiles; /**< those in which it is on: "domain", "private", "public" */
  std::vector<std::string>
      blocking; /**< names of rules made for this program against datagrams, where it is on */
};

/** @param program  the program, UTF-8 */
tagFirewallFacts LookAtFirewall(const std::string& program);

}  // namespace tvmgr
