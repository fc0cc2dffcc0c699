#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

#include "tavira/TaviraManager.h"

namespace tavira {

/** What one printer operation sends. */
struct tagPrinterOperation {
  std::uint32_t code;
  std::string_view commands; /**< empty: the request's own data */
  bool brackets_setting_42;  /**< setting 42 is "T" while it runs */
};

inline constexpr std::array kPrinterOperations = {
    tagPrinterOperation{TVMGR_OP_HEAD_MAINTENANCE, "~J(C", false},
    tagPrinterOperation{TVMGR_OP_HEAD_CHECK, "~W(PNC", false},
    tagPrinterOperation{TVMGR_OP_MEDIA_CALIBRATION, "~JC", false},
    tagPrinterOperation{TVMGR_OP_FACTORY_RESET, "^XA^JUF^XZ^XA^JUS^XZ", false},
    tagPrinterOperation{TVMGR_OP_INITIALIZE_MEMORY, "^XA^JBE^XZ", false},
    tagPrinterOperation{TVMGR_OP_SEND_DATA, "", true},
    tagPrinterOperation{TVMGR_OP_PRINT_CONFIGURATION, "~WC", true},
    tagPrinterOperation{TVMGR_OP_WIPE_FONTS,
                        "^XA^WDR:*.FNT^XZ^XA^WDR:*.TTF^XZ^XA^WDR:*.TTE^XZ"
                        "^XA^WDE:*.FNT^XZ^XA^WDE:*.TTE^XZ^XA^WDE:*.TTF^XZ"
                        "^XA^WDZ:*.FNT^XZ^XA^WDZ:*.TTF^XZ^XA^WDZ:*.TTE^XZ",
                        true},
    tagPrinterOperation{TVMGR_OP_WIPE_BARCODES, "^XA^WDZ:*.BAR^XZ", true},
    tagPrinterOperation{TVMGR_OP_WIPE_GRAPHICS,
                        "^XA^WDR:*.PNG^XZ^XA^WDR:*.GRF^XZ^XA^WDE:*.PNG^XZ^XA^WDE:*.GRF^XZ", true},
    tagPrinterOperation{TVMGR_OP_WIPE_FORMATS, "^XA^WDR:*.FMT^XZ^XA^WDE:*.FMT^XZ", true},
    tagPrinterOperation{TVMGR_OP_RESET_PREFIX,
                        "\x1EXA\x1E"
                        "CT~\x1E"
                        "CC^\x1E"
                        "CD,\x1EXZ",
                        false},
};

/** Null for TVMGR_OP_NONE and for a code that does not exist. */
constexpr const tagPrinterOperation* FindPrinterOperation(std::uint32_t code) {
  const auto found =
      std::find_if(kPrinterOperations.begin(), kPrinterOperations.end(),
                   [code](const tagPrinterOperation& operation) { return operation.code == code; });
  return found == kPrinterOperations.end() ? nullptr : &*found;
}

static_assert(FindPrinterOperation(TVMGR_OP_WIPE_FONTS)->commands.size() == 144);
static_assert(FindPrinterOperation(TVMGR_OP_WIPE_GRAPHICS)->commands.size() == 64);
static_assert(FindPrinterOperation(TVMGR_OP_WIPE_FORMATS)->commands.size() == 32);
static_assert(FindPrinterOperation(TVMGR_OP_RESET_PREFIX)->commands.size() == 18);
static_assert(std::all_of(kPrinterOperations.begin(), kPrinterOperations.end(),
                          [](const tagPrinterOperation& operation) {
                            return FindPrinterOperation(operation.code) == &operation &&
                                   operation.brackets_setting_42 == (operation.code >= TVMGR_OP_SEND_DATA &&
                                                                     operation.code <= TVMGR_OP_WIPE_FORMATS);
                          }));

}  // namespace tavira
