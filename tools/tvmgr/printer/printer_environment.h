#pragma once

#include <string>
#include <vector>

namespace tvmgr {

// Environment variables that choose the printer when the command line does not.
constexpr char kPortVariable[] = "TVMGR_PORT";
constexpr char kDeviceVariable[] = "TVMGR_DEVICE";
constexpr char kAddressVariable[] = "TVMGR_ADDRESS";

/**
 * Makes the variables fit for the argument parser: it reads them as bytes, so they are put there as UTF-8. A
 * choice on the command line replaces the one of the environment whole, so the variables are emptied then.
 */
void PreparePrinterEnvironment(const std::vector<std::string>& arguments);

}  // namespace tvmgr
