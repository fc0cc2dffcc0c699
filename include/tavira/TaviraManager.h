/** @file
 * TaviraManager: reads and changes the configuration of LX-R4100 label printers and manages the files that
 * they store.
 *
 * This is the whole public interface of TaviraManager.dll, for C11 and C++17 and later. Link with the import
 * library or look the functions up by name; every export is a plain C function.
 *
 * CONVENTIONS
 *
 * 1.  Results. Every function returns int32_t: TVMGR_OK (0) or an error code of enum TvmgrResult, or a code
 *     of the port library Ferrolink.dll passed through unchanged. The one exception is TVMGR_GetSettingValue
 *     (bool). "No manager" (before TVMGR_Initialize, after TVMGR_Terminate) is -2 in every function but
 *     TVMGR_Initialize and TVMGR_Terminate themselves. A failed allocation is -3 wherever nothing else is
 *     said.
 * 2.  No exception leaves the module, except std::invalid_argument for a negative index (functions that take
 *     one). Only a C++ host that was built with the module's own run-time library (MinGW-w64) can catch it;
 *     it ends the process of every other host (MSVC, C, C#, Python). Check an index before the call.
 * 3.  Blocking. Functions that talk to the printer block the calling thread until they end. Every wait is
 *     bounded; "blocks up to" states the bound of the waits themselves. One transaction waits up to 60 s for
 *     the first answer byte unless stated otherwise, and at least 100 ms; only a time-out of 0 waits not at
 *     all. Time-outs are unsigned: 0xFFFFFFFF is 49 days, not "for ever". The module cannot interrupt a call
 *     inside Ferrolink.dll.
 * 4.  Silence. A printer that does not answer is not an error of a transaction: the operation goes on with an
 *     empty answer. Functions that promise an effect prove it by reading back (-82 when the printer shows
 *     otherwise).
 * 5.  Threads. The functions take no lock of their own: call them from one thread, one at a time. Only the
 *     printer search runs beside the host (TVMGR_StartSearchPrinter); its stop, its status and its results
 *     may be asked for from any thread meanwhile. No call at all beside TVMGR_Initialize or TVMGR_Terminate.
 *     No call from a DllMain: loading a library or waiting for a thread there blocks the process.
 * 6.  Ownership. The module owns everything that it returns no pointer to; all data is handed over as copies
 *     in the host's buffers. Byte buffers are (pointer, length in bytes), names are (pointer, length in
 *     characters). Texts that the module has written into a record are the host's to release
 *     (TvmgrTextRelease), before the DLL is unloaded: the code that frees them is in it.
 * 7.  Encoding. Wide text is UTF-16. Bytes sent to the printer and text in host files are in the system's
 *     ANSI code page, single-byte, double-byte or UTF-8. A file name with a character that the code page
 *     lacks is refused (-7), never sent as a name that merely looks alike. File names are compared without
 *     regard to the case of letters, as the system compares them. Setting values are bytes exactly as the
 *     printer reports them, without terminator.
 * 8.  Settings are named by the numbers of enum TvmgrSetting, file lists by enum TvmgrFileList. The two
 *     number spaces are separate, even where a number stands in both.
 * 9.  Loaded values. TVMGR_LoadSetting(true, 0) fills the value store; TVMGR_LoadSetting(false, id) and
 *     TVMGR_LoadSettingByList only refresh values that a full load has stored. Values are read with
 *     TVMGR_GetSettingValue.
 *     TRAP: full loads also happen within both updates (TVMGR_UpdatePrinterSetting and ...NoChangeDPI), a
 *     factory reset, TVMGR_Backup(1) and TVMGR_Restore. Each empties the store first, and leaves it without
 *     settings when the printer is silent or the transaction fails.
 * 10. Resolution guard. Loads (also those that other functions make), updates, direct commands and restore
 *     put the printer's resolutions (settings 3, 4, 5) at 600 and its mode (setting 84) at "D" while they
 *     work, when they were not so already, and put them back afterwards. Each side is one more transaction,
 *     which makes the printer save all its settings. What was captured is kept until an update of 3, 4, 5 or
 *     76, a factory reset or a restore makes it stale.
 *     TRAP: a put-back that fails is silent, and the printer stays at 600 and "D". The next function inside
 *     the guard puts back once more, unless what was captured is stale by then.
 *     TRAP: choosing another printer does not make it stale. Use a new manager (TVMGR_Terminate,
 *     TVMGR_Initialize) for each printer, or the second one may be given the first one's resolutions.
 *     TRAP: an update of setting 84 does not make it stale.
 *     TRAP: while the guard holds, setting 84 reads "D": a load of a printer in another mode stores that.
 *     TRAP: a printer that leaves the capture unanswered but takes commands is put at 600 and an empty mode.
 * 11. Silence again. Where a function's 0 says only that commands were sent, TVMGR_GetPrinterStatus tells a
 *     silent printer (status 0) from one that is there, in 3 s.
 * 12. Flags. A bool is one byte, and every value of it but 0 is true. The reload flag of TVMGR_Backup and the
 *     mode of TVMGR_LoadStoredData are numbers: 1, or any other.
 * 13. The end. TVMGR_Terminate before FreeLibrary. The worker of a search keeps the DLL loaded until it ends.
 */
#ifndef TAVIRA_TAVIRA_MANAGER_H_
#define TAVIRA_TAVIRA_MANAGER_H_

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#if defined(_MSC_VER)
#include <intrin.h>
#endif
#if !defined(_WIN32) && !defined(__cplusplus)
#include <uchar.h>
#endif

#ifdef __cplusplus
extern "C" {
#endif

/**
 * The version of the module that this header belongs to; its version resource and tvmgr --version say the
 * same.
 */
#define TVMGR_VERSION_MAJOR 1
#define TVMGR_VERSION_MINOR 0
#define TVMGR_VERSION_PATCH 0

/** One UTF-16 code unit: wchar_t on Windows; char16_t where the module's core is built elsewhere. */
#if defined(_WIN32)
typedef wchar_t TvmgrChar;
#else
typedef char16_t TvmgrChar;
#endif

/** Result codes. Any other value comes from Ferrolink.dll, unchanged. */
enum TvmgrResult {
  TVMGR_OK = 0,
  TVMGR_FILE_TOO_LARGE = 4,   /**< the backup file has grown past 1 GiB; it was closed properly before that */
  TVMGR_PORT_NOT_READY = -1,  /**< Ferrolink.dll is missing or incomplete; search: no worker could start */
  TVMGR_NOT_INITIALIZED = -2, /**< no manager, or one whose port link found no memory in TVMGR_Initialize */
  TVMGR_OUT_OF_MEMORY = -3,   /**< an allocation failed */
  TVMGR_PORT_LIBRARY_MISSING = -5, /**< Ferrolink.dll cannot be loaded or lacks one of its six entry points */
  TVMGR_BAD_ARGUMENT = -7,        /**< a bad argument, nothing to send, or an operation that does not exist */
  TVMGR_SEARCH_FAILED = -9,       /**< the network search could not open its socket or send its broadcast */
  TVMGR_PAYLOAD_UNREADABLE = -10, /**< a stored file came back with a payload that cannot be decoded */
  TVMGR_FILE_ERROR = -63,         /**< the host file cannot be created, opened or written */
  TVMGR_FILE_READ_ERROR = -65,    /**< the host file cannot be read whole, or there is no memory for it */
  TVMGR_NOT_CONFIRMED = -82,      /**< the printer took the command but still shows another state */
  TVMGR_CHECK_PORT_UNSUPPORTED = -103 /**< TVMGR_CheckPort, always */
};

/**
 * Setting identifiers, named after the printer's own key of each setting (three letters, one character).
 * Every setting can be read and written, but TVMGR_SETTING_ST (written only) and TVMGR_SETTING_BACKGROUND
 * (read only).
 */
enum TvmgrSetting {
  TVMGR_SETTING_IMP_S = 1,
  TVMGR_SETTING_IMF_V = 2,
  TVMGR_SETTING_CLR_Z = 3, /**< first resolution, dots per inch */
  TVMGR_SETTING_CLR_P = 4, /**< second resolution, dots per inch */
  TVMGR_SETTING_CLR_R = 5, /**< third resolution, dots per inch */
  TVMGR_SETTING_CLM_P = 6,
  TVMGR_SETTING_CLM_S = 7,
  TVMGR_SETTING_CLM_D = 8,
  TVMGR_SETTING_CLM_T = 9,
  TVMGR_SETTING_CLP_M = 10,
  TVMGR_SETTING_CMP_S = 11,
  TVMGR_SETTING_CMP_F = 12,
  TVMGR_SETTING_CLM_F = 13,
  TVMGR_SETTING_CLS_P = 14,
  TVMGR_SETTING_CLS_L = 15,
  TVMGR_SETTING_CLS_G = 16,
  TVMGR_SETTING_CLW_T = 17,
  TVMGR_SETTING_CLW_B = 18,
  TVMGR_SETTING_CLW_R = 19,
  TVMGR_SETTING_CLW_L = 20,
  TVMGR_SETTING_CPC_E = 21,
  TVMGR_SETTING_CLE_T = 22,
  TVMGR_SETTING_CLE_M = 23,
  TVMGR_SETTING_CLP_O = 24,
  TVMGR_SETTING_CPC_C = 25,
  TVMGR_SETTING_CPC_D = 26,
  TVMGR_SETTING_CPC_P = 27,
  TVMGR_SETTING_CPC_B = 28,
  TVMGR_SETTING_CBW_C = 29,
  TVMGR_SETTING_CFE_T = 35,
  TVMGR_SETTING_CLB_I = 36,
  TVMGR_SETTING_BACKGROUND = 37, /**< the bytes of KORVDEF.BGD, from a full load; no command of its own */
  TVMGR_SETTING_CMT_S = 38,
  TVMGR_SETTING_CMT_T = 39,
  TVMGR_SETTING_CMF_P = 40,
  TVMGR_SETTING_CMF_H = 41,
  TVMGR_SETTING_CMP_M = 42, /**< written with "T" around the wiping operations */
  TVMGR_SETTING_CUB_Z = 43,
  TVMGR_SETTING_CSL_N = 44,
  TVMGR_SETTING_CWR_P = 45,
  TVMGR_SETTING_ST = 46, /**< written only: it has no query and is never read back */
  TVMGR_SETTING_CUI_B = 47,
  TVMGR_SETTING_CUI_F = 48,
  TVMGR_SETTING_CUI_C = 49,
  TVMGR_SETTING_CUL_B = 50,
  TVMGR_SETTING_CUL_C = 51,
  TVMGR_SETTING_CUL_L = 52,
  TVMGR_SETTING_CMV_S = 53,
  TVMGR_SETTING_CMV_C = 54,
  TVMGR_SETTING_CMV_I = 55,
  TVMGR_SETTING_CMN_S = 56,
  TVMGR_SETTING_CMV_O = 57,
  TVMGR_SETTING_CMU_A = 58,
  TVMGR_SETTING_CMU_B = 59,
  TVMGR_SETTING_CMU_C = 60,
  TVMGR_SETTING_CMU_D = 61,
  TVMGR_SETTING_CMU_E = 62,
  TVMGR_SETTING_CMU_F = 63,
  TVMGR_SETTING_CMU_G = 64,
  TVMGR_SETTING_CCC_T = 65, /**< control prefix character, two hexadecimal digits when read */
  TVMGR_SETTING_CCC_C = 66, /**< format prefix character, likewise */
  TVMGR_SETTING_CCC_D = 67, /**< delimiter character, likewise */
  TVMGR_SETTING_SCM_1 = 68,
  TVMGR_SETTING_SCM_2 = 69,
  TVMGR_SETTING_SCM_O = 70,
  TVMGR_SETTING_SCM_C = 71,
  TVMGR_SETTING_SCN_L = 72,
  TVMGR_SETTING_SCN_C = 73,
  TVMGR_SETTING_CPC_Y = 74, /**< not verified after it was written */
  TVMGR_SETTING_CBB_M = 76, /**< a change of it counts as a change of resolution */
  TVMGR_SETTING_CLA_C = 77,
  TVMGR_SETTING_CFA_W = 78,
  TVMGR_SETTING_INU_S = 79,
  TVMGR_SETTING_INU_N = 80,
  TVMGR_SETTING_INU_U = 81,
  TVMGR_SETTING_INU_P = 82,
  TVMGR_SETTING_INU_V = 83,
  TVMGR_SETTING_CMP_U = 84, /**< mode that goes with the resolutions */
};

/** Lists of the files that the printer stores. */
enum TvmgrFileList {
  TVMGR_LIST_PNG = 30,        /**< graphics, E:*.PNG */
  TVMGR_LIST_TTF = 31,        /**< fonts, E:*.TTF */
  TVMGR_LIST_TTE = 32,        /**< fonts, E:*.TTE */
  TVMGR_LIST_FMT = 33,        /**< stored formats, E:*.FMT */
  TVMGR_LIST_CNV = 34,        /**< Z:*.CNV */
  TVMGR_LIST_BACKGROUND = 36, /**< the one file E:KORVDEF.BGD */
  TVMGR_LIST_ZPL = 75,        /**< stored formats, E:*.ZPL */
  TVMGR_LIST_GRF = 85         /**< graphics, E:*.GRF */
};

/** Operation codes of TVMGR_SetExecuteList. */
enum TvmgrOperation {
  TVMGR_OP_NONE = 0x1001000,                /**< does nothing, answers 0 */
  TVMGR_OP_HEAD_MAINTENANCE = 0x1001001,    /**< "~J(C"; may keep the printer busy for minutes */
  TVMGR_OP_HEAD_CHECK = 0x1001002,          /**< "~W(PNC" */
  TVMGR_OP_MEDIA_CALIBRATION = 0x1001003,   /**< "~JC" */
  TVMGR_OP_FACTORY_RESET = 0x1001004,       /**< restores and saves the factory settings, then reloads them */
  TVMGR_OP_INITIALIZE_MEMORY = 0x1001005,   /**< empties device E:, then refreshes the file lists (but 34) */
  TVMGR_OP_SEND_DATA = 0x1001006,           /**< sends the request's own bytes */
  TVMGR_OP_PRINT_CONFIGURATION = 0x1001007, /**< "~WC" */
  TVMGR_OP_WIPE_FONTS = 0x1001008,          /**< *.FNT, *.TTF, *.TTE on R:, E: and Z: */
  TVMGR_OP_WIPE_BARCODES = 0x1001009,       /**< Z:*.BAR */
  TVMGR_OP_WIPE_GRAPHICS = 0x100100A,       /**< *.PNG, *.GRF on R: and E: */
  TVMGR_OP_WIPE_FORMATS = 0x100100B,        /**< *.FMT on R: and E: */
  TVMGR_OP_RESET_PREFIX = 0x100100C         /**< prefix characters back to "~", "^" and "," */
};

/** Request kinds of TVMGR_UpdateRegistList. */
enum TvmgrRequest {
  TVMGR_REQUEST_REGISTER_GRAPHIC = 0x1001000,
  TVMGR_REQUEST_REGISTER_FORMAT = 0x1001001,
  TVMGR_REQUEST_REGISTER_FONT = 0x1001003,
  TVMGR_REQUEST_DELETE_GRAPHIC = 0x1001004,
  TVMGR_REQUEST_DELETE_FORMAT = 0x1001005,
  TVMGR_REQUEST_DELETE_FONT = 0x1001007,
  TVMGR_REQUEST_BACKGROUND = 0x1001008 /**< register or delete the background file */
};

/** Printer states of TVMGR_GetPrinterStatus. */
enum TvmgrStatus {
  TVMGR_STATUS_UNKNOWN = 0, /**< the printer did not answer: off-line or not reachable */
  TVMGR_STATUS_IDLE = 1,
  TVMGR_STATUS_BUSY = 2, /**< one of the states SP, PR, CL, OF */
  TVMGR_STATUS_OTHER = 3 /**< any other state that the printer reports */
};

/** Kinds of printer search. */
enum TvmgrSearchKind { TVMGR_SEARCH_USB = 0, TVMGR_SEARCH_NETWORK = 1 };

/* -------------------------------------------------------------------------------------------------------- */
/* Wide strings and records */

/**
 * A text member of a record: the address of zero-terminated UTF-16 text, or null for an empty one.
 *
 * Texts that the host passes in may point at any zero-terminated text. Texts that the module has written
 * carry a header in front of the characters (TvmgrTextData); the host releases them with TvmgrTextRelease,
 * before the DLL is unloaded. A record to be written must start with null texts or with texts that the module
 * (or a string class of the same layout) made.
 */
typedef const TvmgrChar* TvmgrText;

struct TvmgrTextManager;

/** The header in front of a text's characters. Hosts use the helpers below instead. */
typedef struct TvmgrTextData {
  struct TvmgrTextManager* manager; /**< owns this buffer; frees it */
  int32_t length;                   /**< characters, without the terminator */
  int32_t capacity;                 /**< characters, without the terminator */
  int32_t references;               /**< changed atomically; negative: locked, not to be shared */
  int32_t padding;
} TvmgrTextData;

/** The five functions of a string manager, each called with the manager first. */
typedef struct TvmgrTextManagerFunctions {
  TvmgrTextData* (*Allocate)(struct TvmgrTextManager*, int32_t chars, int32_t char_size);
  void (*Free)(struct TvmgrTextManager*, TvmgrTextData*);
  TvmgrTextData* (*Reallocate)(struct TvmgrTextManager*, TvmgrTextData*, int32_t chars, int32_t char_size);
  TvmgrTextData* (*GetNilString)(struct TvmgrTextManager*);
  struct TvmgrTextManager* (*Clone)(struct TvmgrTextManager*);
} TvmgrTextManagerFunctions;

typedef struct TvmgrTextManager {
  const TvmgrTextManagerFunctions* functions;
} TvmgrTextManager;

/** What TVMGR_Backup is to write. A flag counts only when it is 1. */
typedef struct TvmgrBackupInfo {
  TvmgrText path;    /**< backup file on the host */
  uint8_t settings;  /**< S: the settings */
  uint8_t section_p; /**< P: named in the header only */
  uint8_t section_i; /**< I: graphics (lists 30 and 85) */
  uint8_t section_t; /**< T: stored formats (lists 33 and 75) */
  uint8_t section_f; /**< F: fonts (lists 31 and 32) */
  uint8_t section_c; /**< C: named in the header only */
  uint8_t section_b; /**< B: the background file (list 36) */
} TvmgrBackupInfo;

/** One printer, as a search found it or as TVMGR_GetPrinterDeviceInfo reports it. */
typedef struct TvmgrFoundPrinter {
  int32_t kind;    /**< TVMGR_SEARCH_USB or TVMGR_SEARCH_NETWORK */
  TvmgrText text1; /**< USB: model. Network: first name. Device info: the port name */
  TvmgrText text2; /**< USB: IEEE 1284 device ID. Network: second name */
  TvmgrText text3; /**< USB: device path */
  int32_t value1;  /**< USB: vendor number, 0 when not read */
  int32_t value2;  /**< USB: product number, 0 when not read */
  TvmgrText text4; /**< USB: product name */
  TvmgrText text5; /**< Network: address */
} TvmgrFoundPrinter;

/** The number of characters of a text; 0 for null. */
static inline size_t TvmgrTextLength(TvmgrText text) {
  size_t length = 0;
  while (text != NULL && text[length] != 0) {
    ++length;
  }
  return length;
}

/** Releases a text that the module has written into a record, and sets it to null. Null is allowed. */
static inline void TvmgrTextRelease(TvmgrText* text) {
  if (text != NULL && *text != NULL) {
    TvmgrTextData* data = (TvmgrTextData*)(uintptr_t)((uintptr_t)*text - sizeof(TvmgrTextData));
#if defined(_MSC_VER)
    const int32_t left = (int32_t)_InterlockedDecrement((volatile long*)&data->references);
#else
    const int32_t left = __atomic_sub_fetch(&data->references, 1, __ATOMIC_ACQ_REL);
#endif
    if (left <= 0) {
      data->manager->functions->Free(data->manager, data);
    }
    *text = NULL;
  }
}

/** Releases the five texts of a record that the module has written. */
static inline void TvmgrFoundPrinterRelease(TvmgrFoundPrinter* printer) {
  TvmgrTextRelease(&printer->text1);
  TvmgrTextRelease(&printer->text2);
  TvmgrTextRelease(&printer->text3);
  TvmgrTextRelease(&printer->text4);
  TvmgrTextRelease(&printer->text5);
}

/* -------------------------------------------------------------------------------------------------------- */
/* Life of the manager */

/**
 * Creates the manager and loads Ferrolink.dll.
 *
 * Sends nothing. There is no count: a second call makes a second manager and the first one is never released,
 * so pair each call with TVMGR_Terminate. A damaged file is -5 too: no box of the system asks the user.
 *
 * @retval 0   Ready: choose a printer with TVMGR_UpdatePortComInfo.
 * @retval -3  The manager could not be allocated, or (manager in place) its port link could not. The printer
 *     functions answer -2 in both cases.
 * @retval -5  Ferrolink.dll is missing or incomplete. The manager is in place; its printer functions answer
 *     -1.
 */
int32_t TVMGR_Initialize(void);

/**
 * Destroys the manager: waits for the worker of the last printer search, frees everything, closes
 * Ferrolink.dll (which stays loaded).
 *
 * Blocks until 3 s after the last TVMGR_StartSearchPrinter, also when that search was stopped before;
 * printers that are being asked for their names are given up, within 100 ms. A call that another thread still
 * has in the module is waited for: a TVMGR_StopSearchPrinter comes back at once, any other one ends in its
 * own time.
 * A host that unloads the module without this call leaks the manager; a worker that still runs keeps the
 * module in memory until it ends, at most 39 s.
 *
 * @retval 0  Always, also without a manager.
 */
int32_t TVMGR_Terminate(void);

/* -------------------------------------------------------------------------------------------------------- */
/* Choosing the printer */

/**
 * Chooses the printer that every later function talks to.
 *
 * Sends nothing. With a record, the printer is its device path (text3) or its address (text5), and the port
 * name is port_name or, when that is null, the name of a port of the spooler that leads to it (of several,
 * one that an installed printer uses). With a port name alone, the spooler is asked which printer hangs on
 * that port. Both null: an empty choice; Ferrolink.dll then gets empty strings. Every choice replaces the
 * earlier one whole. Nothing is checked against the printer: TVMGR_GetPrinterStatus does that.
 *
 * TRAP: a port behind which no printer is known (no such port, WSD, IPP, LPT, a USB printer that is off) is
 * chosen all the same, with its name alone: TVMGR_GetPrinterDeviceInfo then gives neither text3 nor text5.
 *
 * @param record     the record of a search, or null; its texts are copied.
 * @param port_name  a port of the print spooler ("USB001", "IP_192.0.2.7"), or null.
 * @retval 0   Chosen.
 * @retval -2  No manager or no port link.
 * @retval -3  Out of memory; no printer is chosen, the earlier one neither.
 */
int32_t TVMGR_UpdatePortComInfo(const TvmgrFoundPrinter* record, const TvmgrChar* port_name);

/**
 * Reports the choice: kind (1 when there is an address, else 0), text1 port name, text3 device path, text5
 * address.
 *
 * @param record  the host's record; its earlier texts are released. Release the new ones after use.
 * @retval 0   Written.
 * @retval -2  No manager, no port link, or record is null.
 * @retval -3  Out of memory; the record is unchanged.
 */
int32_t TVMGR_GetPrinterDeviceInfo(TvmgrFoundPrinter* record);

/* -------------------------------------------------------------------------------------------------------- */
/* Reading settings */

/**
 * Reads one setting, or everything.
 *
 * all false: one transaction with the setting's query, which refreshes its stored value; a value that no full
 * load has stored before is dropped. For settings 3, 4, 5 and 76 the guard leaves the resolutions alone (mode
 * only). Blocks up to four transactions (capture, neutralise, query, put back).
 *
 * all true: empties the value store, reads all 76 readable settings in one transaction, the eight file lists
 * in eight, the background file when the printer has it, then the resolution settings again. Blocks up to
 * sixteen transactions; on an answering printer a few seconds.
 *
 * @param all  true reads everything and ignores id.
 * @param id   a setting identifier.
 * @retval 0   Done. A printer that stayed silent is no error: compare the values.
 * @retval -1  Ferrolink.dll is missing or incomplete.
 * @retval -2  No manager or no port link.
 * @retval -7  The setting has no query (46) or does not exist.
 * @retval -10  all true: the background file came back with a payload that cannot be decoded.
 * @retval other  Ferrolink.dll's own code. After a failed full load the value store must not be trusted.
 */
int32_t TVMGR_LoadSetting(bool all, int32_t id);

/** Empties the load list. @retval 0 Always. @retval -2 No manager. */
int32_t TVMGR_ClearLoadList(void);

/**
 * Appends a setting to the load list; the same one may stand in it several times.
 *
 * @retval 0   Appended. Any number is accepted; one without a query adds nothing to the transaction.
 * @retval -2  No manager.
 * @retval -3  Out of memory.
 */
int32_t TVMGR_SetLoadList(uint32_t id);

/**
 * Reads the settings named in the load list.
 *
 * Sends one transaction with the query of every listed setting and refreshes the stored values. A value that
 * no full load has stored before is dropped. The load list is kept. Blocks up to four transactions.
 *
 * @param flag  true: the guard puts the resolutions to neutral and back, false: it leaves them alone and
 *     touches the mode only. (The guard works with the negation of this argument as its no-change flag.)
 * @retval 0   The answers that came are stored; a silent printer is not an error: compare the values.
 * @retval -1  Ferrolink.dll is missing or incomplete.
 * @retval -2  No manager or no port link.
 * @retval -7  The load list is empty or names no readable setting; nothing of it was sent.
 * @retval other  Ferrolink.dll's own code, unchanged.
 */
int32_t TVMGR_LoadSettingByList(bool flag);

/**
 * Copies a stored value. Never talks to the printer.
 *
 * Ask for the length first (buffer null), then for the bytes with a buffer of exactly that length.
 * TRAP: *length bytes are copied, not fewer; a length beyond the stored one reads out of bounds, and asking
 * for the bytes of an empty value ends the process. Skip empty values.
 *
 * @param id      a setting identifier, or TVMGR_SETTING_BACKGROUND.
 * @param buffer  null to ask for the length.
 * @param length  bytes; written when buffer is null, read when it is not.
 * @return true when a value is stored; false when none is, length is null, or there is no manager.
 */
bool TVMGR_GetSettingValue(int32_t id, uint8_t* buffer, int32_t* length);

/* -------------------------------------------------------------------------------------------------------- */
/* Writing settings */

/** Empties the update list. @retval 0 Always. @retval -2 No manager. */
int32_t TVMGR_ClearUpdateList(void);

/**
 * Appends a setting and its new value to the update list.
 *
 * @param id      a setting identifier. TRAP: TVMGR_SETTING_BACKGROUND and numbers that do not exist are taken, too:
 *     nothing is sent for them, and the update ends in -82 unless the printer holds that value anyway.
 * @param value   copied; null gives an empty value. Sent as it is, without quoting or checks.
 * @param length  bytes; 0 or less gives an empty value.
 * @retval 0   Appended.
 * @retval -2  No manager.
 * @retval -3  Out of memory.
 */
int32_t TVMGR_SetUpdateList(uint32_t id, const uint8_t* value, int32_t length);

/**
 * Writes the settings of the update list, saves them, and proves it by reading back.
 *
 * One transaction with all set commands, the save and the closing command inside the resolution guard; then
 * up to ten passes of 500 ms wait, full settings load, background file (when list 36 has it), resolution
 * settings, until every written value (46 and 74 excepted) equals the printer's, ASCII letter case ignored.
 * The update list is kept; the load list is replaced by 3, 4, 5, 76; the value store is emptied and filled
 * anew in each pass (convention 9). An empty update list sends the save alone. Blocks up to 4 transactions,
 * and for each pass 0.5 s and at most 8 transactions.
 *
 * TRAP: on a printer whose resolutions or mode were not neutral, the guard puts settings 3, 4, 5 and 84 back
 * to what they were, which undoes a new value for one of them. For 3, 4 and 5 the result is then -82. For 84
 * it says nothing: the guard makes it read "D" while it is verified, so that a new "D" ends in 0 although the
 * old value is back, and any other value in -82, also when it is the one that the printer has.
 *
 * TRAP: settings 65, 66 and 67 always end in -82: they are written as a character and read as two digits. Use
 * TVMGR_UpdatePrefix.
 *
 * TRAP: a printer that normalises a value ("600" stored as "0600") ends in -82 although it took the value.
 *
 * TRAP: an empty value counts as confirmed when the printer reports none, a silent printer included.
 *
 * @retval 0    Every value is confirmed by the printer.
 * @retval -1   Ferrolink.dll is missing or incomplete.
 * @retval -2   No manager or no port link.
 * @retval -10  Sent; the background file, read in the verification, cannot be decoded.
 * @retval -82  Sent, but some value still differs after ten passes.
 * @retval other  Ferrolink.dll's own code; what was written is not known.
 */
int32_t TVMGR_UpdatePrinterSetting(void);

/**
 * As TVMGR_UpdatePrinterSetting, but around the write the guard leaves settings 3, 4 and 5 alone: new values
 * for them stay (84 is handled all the same).
 */
int32_t TVMGR_UpdatePrinterSettingNoChangeDPI(void);

/**
 * Changes the printer's three prefix characters, saves, and reads them back into the value store.
 *
 * One transaction of up to 3 s, then a load of settings 65, 66, 67, up to four transactions, whose result is
 * ignored (the load list is replaced by these three). The characters are sent without any check: an
 * unsuitable one makes the printer unreadable.
 *
 * @param control    default '~'
 * @param format     default '^'
 * @param delimiter  default ','
 * @retval 0   Sent. Whether the printer took it: TVMGR_IsDefaultPrefix, or the values of 65, 66, 67.
 * @retval -1  Ferrolink.dll is missing or incomplete.
 * @retval -2  No manager or no port link.
 * @retval -3  Out of memory.
 * @retval other  Ferrolink.dll's own code.
 */
int32_t TVMGR_UpdatePrefix(uint8_t control, uint8_t format, uint8_t delimiter);

/**
 * Asks the printer whether its prefix characters are the default ones. One transaction of up to 3 s.
 *
 * @param is_default  receives 1 or 0; may be null. TRAP: a silent printer or a short answer reads as 1, and
 *     so does every failure, but that of a missing manager, which writes nothing.
 * @retval 0   Asked.
 * @retval -1  Ferrolink.dll is missing or incomplete.
 * @retval -2  No manager or no port link.
 * @retval other  Ferrolink.dll's own code.
 */
int32_t TVMGR_IsDefaultPrefix(uint8_t* is_default);

/* -------------------------------------------------------------------------------------------------------- */
/* Status, direct commands, operations */

/**
 * Asks the printer for its state. One exchange that waits up to 3 s; the resolution guard is not used.
 *
 * @param status  receives a value of enum TvmgrStatus; 0 when the printer did not answer.
 * @retval 0   Asked: status says what came back.
 * @retval -1  Ferrolink.dll is missing or incomplete.
 * @retval -2  No manager or no port link.
 * @retval -7  status is null.
 * @retval other  Ferrolink.dll's own code; status is 0.
 */
int32_t TVMGR_GetPrinterStatus(uint32_t* status);

/**
 * Sends the host's own bytes inside the resolution guard, followed by the closing command "^XA^H(E^XZ".
 *
 * One transaction (up to 60 s) and up to three of the guard. No save is appended; but a guard that has
 * something to put back makes the printer save all its settings, the host's changes included. The answer is
 * not handed out.
 *
 * @param data    bytes, sent unchanged
 * @param length  bytes, at least 1
 * @param allow_resolution_change  false: the guard leaves settings 3, 4 and 5 alone.
 * @retval 0   Sent; the printer may have stayed silent.
 * @retval -1  Ferrolink.dll is missing or incomplete.
 * @retval -2  No manager or no port link.
 * @retval -7  data is null or length is less than 1; nothing was sent.
 * @retval other  Ferrolink.dll's own code.
 */
int32_t TVMGR_DirectSendCommand(const uint8_t* data, int32_t length, bool allow_resolution_change);

/**
 * Stores the operation for TVMGR_ExecutePrinterOperation.
 *
 * TRAP: the data is replaced only when data is not null and length is at least 1; otherwise the bytes of an
 * earlier call stay.
 *
 * @param code  a value of enum TvmgrOperation.
 * @retval 0   Stored.
 * @retval -2  No manager.
 * @retval -3  Out of memory; the earlier request is unchanged.
 */
int32_t TVMGR_SetExecuteList(uint32_t code, const uint8_t* data, int32_t length);

/**
 * Runs the stored operation and waits until the printer is no longer busy.
 *
 * Up to three transactions, 1 s, then a status poll (up to 3 s) and 1 s in turn until the printer is no
 * longer busy, for up to 60 s and one turn more (300 s for HEAD_MAINTENANCE). A printer still busy after that
 * is not reported: ask for its status. FACTORY_RESET then empties and refills the value store (settings,
 * background file, resolutions: 1 s and at most 8 transactions), INITIALIZE_MEMORY refreshes the file lists
 * but 34 and reads the background file (likewise). The request stays stored.
 *
 * TRAP: a silent printer counts as not busy, and before a port was chosen (TVMGR_UpdatePortComInfo) there is
 * no wait at all.
 *
 * TRAP: operations 0x1001006 to 0x100100B write setting 42 as "T" before, and after it the value that is
 * stored here; when none is stored, "T" stays. Load everything first.
 *
 * @retval 0   Done; for TVMGR_OP_NONE nothing was sent.
 * @retval -1  Ferrolink.dll is missing or incomplete.
 * @retval -2  No manager or no port link.
 * @retval -7  Unknown code; nothing was sent. Or SEND_DATA without data: setting 42 is left at "T".
 * @retval -10  Done, but the background file, read afterwards, cannot be decoded.
 * @retval other  Ferrolink.dll's own code. Setting 42 may still be "T".
 */
int32_t TVMGR_ExecutePrinterOperation(void);

/* -------------------------------------------------------------------------------------------------------- */
/* Stored files */

/**
 * The number of files in a list, as the last full load, registration, deletion or operation refreshed it.
 *
 * @param kind   a value of enum TvmgrFileList
 * @param count  receives the number of files
 * @retval 0   Written.
 * @retval -2  No manager.
 * @retval -7  count is null or there is no such list; nothing was written.
 */
int32_t TVMGR_GetRegistFileArraySize(int32_t kind, uint32_t* count);

/**
 * The name of one file of a list, with extension, without device letter. Empty for a line of the printer's
 * listing that has no name: pass it over.
 *
 * @param index   from 0. TRAP: a negative index ends the process (convention 2).
 * @param name    null to ask for the length; else receives the name and its terminator.
 * @param length  characters. name null: receives the length without terminator. Otherwise the capacity of
 *     name, at least length + 1; unchanged.
 *
 * TRAP: a smaller capacity ends the process.
 * @retval 0   Written.
 * @retval -2  No manager.
 * @retval -7  length is null, there is no such list, or index is at or beyond its count.
 */
int32_t TVMGR_GetRegistFileArrayData(int32_t kind, int32_t index, TvmgrChar* name, uint32_t* length);

/**
 * Fetches one stored file from device E:. One transaction.
 *
 * @param name        file name with extension, without device letter.
 * @param mode        1 for stored formats (lists 33 and 75), any other value for everything else.
 * @param timeout_ms  how long to wait for the first answer byte, in ms, unsigned; 0 does not wait and fetches
 *     nothing.
 * @retval 0    The answer's data is stored (possibly empty: no such file, or a silent printer).
 * @retval -1   Ferrolink.dll is missing or incomplete.
 * @retval -2   No manager or no port link.
 * @retval -7   name is null, empty, or cannot be written in the code page; nothing was sent.
 * @retval -10  The payload could not be decoded; the stored data is empty.
 * @retval other  Ferrolink.dll's own code; the data of the fetch before stays.
 */
int32_t TVMGR_LoadStoredData(const TvmgrChar* name, uint8_t mode, uint32_t timeout_ms);

/**
 * Copies the data of the last fetch: decoded bytes of a graphic, font or background file (a ":Z64:" payload
 * stays compressed), or a stored format as text with its full name.
 *
 * @param buffer  null to ask for the size.
 * @param length  bytes. In: the size of buffer. Out: the full size, also when fewer bytes were copied.
 * @retval 0   Done; compare the lengths.
 * @retval -2  No manager.
 * @retval -7  length is null.
 */
int32_t TVMGR_GetStoredData(uint8_t* buffer, uint32_t* length);

/**
 * Has no effect on the lists or the pending request; kept for hosts that call it. @retval 0 Always. @retval
 * -2 No manager.
 */
int32_t TVMGR_ClearRegistList(void);

/**
 * Stores the pending request of TVMGR_RegistData or TVMGR_DeleteData. It lasts until the next call.
 *
 * @param kind  a value of enum TvmgrRequest; any value is stored.
 * @param primary    to delete: the file's name with extension, 8-bit text; it ends before a zero byte. To
 *     register: the printer's own download command for the file. Null or size 0: empty.
 * @param secondary  further data of a format registration. Null or size 0: empty.
 * @retval 0   Stored.
 * @retval -2  No manager.
 * @retval -3  Out of memory; the earlier request is unchanged.
 */
int32_t TVMGR_UpdateRegistList(uint32_t kind, const uint8_t* primary, uint32_t primary_size,
                               const uint8_t* secondary, uint32_t secondary_size);

/**
 * Stores a file in the printer's memory and proves it by listing the printer's files. This definition is the
 * module's own.
 *
 * The pending request holds the file as an upload or a backup holds it ("~DYE:NAME,..." or "^XA^DF
 * E:NAME...^XZ"); for REGISTER_FORMAT the secondary data follows it when not empty. One transaction (60 s; on
 * a network port one minute more for each 20 MiB begun, at most 50 minutes), then up to ten passes of 500 ms
 * wait and refresh of the kind's lists, up to two transactions (graphics: list 30, or 85 for a GRF).
 *
 * TRAP: REGISTER_FORMAT takes one pass, and its listing does not change the result: look into lists 33 and
 * 75.
 *
 * @retval 0    The file is listed (REGISTER_FORMAT: sent).
 * @retval -1   Ferrolink.dll is missing or incomplete.
 * @retval -2   No manager or no port link.
 * @retval -7   Not a register kind, no data, no file name in it, or 4 GiB and more; nothing was sent.
 * @retval -82  Sent, but the file is not listed after ten passes.
 * @retval other  Ferrolink.dll's own code.
 */
int32_t TVMGR_RegistData(void);

/**
 * Deletes the file of the pending request from device E: and proves it by listing the printer's files.
 *
 * One transaction, then up to ten passes of 500 ms wait and refresh of the kind's lists, up to two
 * transactions. The background file (kind BACKGROUND) always takes ten passes and is not proved.
 *
 * TRAP: a printer that falls silent lists nothing, and that reads as deleted: 0.
 *
 * TRAP: for any other kind the delete command is sent before the result says -7.
 *
 * @retval 0    The file is not listed (BACKGROUND: sent).
 * @retval -1   Ferrolink.dll is missing or incomplete.
 * @retval -2   No manager or no port link.
 * @retval -7   Empty name (nothing was sent), or not a delete kind (sent!).
 * @retval -82  Sent, but the file is still listed after ten passes.
 * @retval other  Ferrolink.dll's own code.
 */
int32_t TVMGR_DeleteData(void);

/* -------------------------------------------------------------------------------------------------------- */
/* Backup and restore */

/**
 * Stores what TVMGR_Backup is to write; the record is copied.
 *
 * @param info  null changes nothing.
 * @retval 0   Stored.
 * @retval -2  No manager.
 * @retval -3  Out of memory; the earlier information is unchanged.
 */
int32_t TVMGR_UpdateBackupInfo(const TvmgrBackupInfo* info);

/**
 * Writes the printer's settings and stored files to one file on the host: the printer's own commands, which
 * TVMGR_Restore sends back.
 *
 * The file is created or emptied, then written piece by piece (header, settings, one piece for each stored
 * file, trailer), closed after each; nothing else is touched. Settings and file names are those loaded last:
 * use reload 1 unless TVMGR_LoadSetting(true, 0) has just run. Files on device E: only. A failure after the
 * header keeps the finished pieces, takes back what a failed write has left of one, and still ends the file
 * with the trailer where that fits. Blocks for the load (reload 1) and up to one transaction for each stored
 * file.
 *
 * The path is the system's: relative ones count from the current directory at the time of the call; servers
 * (`\\server\share\file`) and any length are taken, devices (NUL, COM1) and pipes are refused with -63.
 *
 * @param reload  1 loads everything from the printer first; every other value does not.
 * TRAP: a file that the printer lists and does not deliver leaves a separator line and no error. With reload
 * 0 before any load the settings section holds every set command with an empty value, and no file follows.
 *
 * @retval 0    Everything that the printer delivered is written.
 * @retval -1   Ferrolink.dll is missing or incomplete.
 * @retval -2   No manager or no port link.
 * @retval -3   Out of memory; whole pieces were written, closed by the trailer if there was memory for it.
 * @retval -7   No path (nothing was done), no section flag is 1 (the file is empty), or a listed name cannot
 *     be written in the code page (the trailer was).
 * @retval -10  A stored file came back with a payload that cannot be decoded (reload 1: also the background
 *     file while loading; the host file was not touched).
 * @retval -63  The file cannot be created, opened again or written (a full disk).
 * @retval 4    The file is past 1 GiB; no more pieces were added, the trailer was.
 * @retval other  Ferrolink.dll's own code while loading or fetching a file.
 */
int32_t TVMGR_Backup(uint8_t reload);

/**
 * Sends a backup file back to the printer, whole and unchecked, in one send, then loads everything.
 *
 * Inside the resolution guard; then 1 s, setting 84 as the guard captured it, save, full load. Waits up to 60
 * s for the printer's answer to the file; on a network port with a file above 20 MiB one minute for each 20
 * MiB and one more, at most 50 minutes. Blocks for that and at most 20 transactions. Needs memory for the
 * file once, plus 10 bytes.
 *
 * TRAP: a printer that stays silent is no error: compare the loaded values, or back up again and compare
 * files.
 * TRAP: the captured resolutions are dropped once the file is sent: a printer that was not at 600 gets them
 * back only from the file (its settings section).
 *
 * @param path  the backup file; as for TVMGR_Backup.
 * @retval 0    Sent, and everything was loaded again. Also for an empty file (nothing was sent).
 * @retval -1   Ferrolink.dll is missing or incomplete.
 * @retval -2   No manager or no port link.
 * @retval -63  The file does not exist or cannot be opened; nothing was sent.
 * @retval -10  Sent; the background file, read afterwards, cannot be decoded.
 * @retval -65  The file cannot be read whole, is 4 GiB or larger, or there is no memory for it; nothing was
 *     sent.
 * @retval other  Ferrolink.dll's own code while sending (the printer may have taken part of the file) or
 *     loading.
 */
int32_t TVMGR_Restore(const TvmgrChar* path);

/* -------------------------------------------------------------------------------------------------------- */
/* Finding printers */

/**
 * Starts a search for printers and returns; a worker thread ends the search after 3 s.
 *
 * Blocks until the worker of an earlier search has ended: until 3 s after that search's start, also when it
 * was stopped before, and up to 36 s more while it asks printers that have fallen silent. USB: the printers
 * are listed at once. Network: one datagram to 255.255.255.255, port 3289; printers announce themselves while
 * the search runs (the first 1,024 count) and are asked for their names when it ends, all at the same time,
 * in two questions of up to 18 s each. Results are there once the status is 0.
 *
 * THE SEARCH FINDS NOTHING. The answers are UDP datagrams to a port of the host program: a firewall must let
 * them in. The one datagram leaves by one network card, the one that the system's routes choose: with several
 * cards, or a VPN, that may be the wrong one. It reaches the card's own network segment and no other. A
 * printer whose address is known needs no search: TVMGR_UpdatePortComInfo with the address in text5.
 *
 * TRAP: results that the worker made incomplete, for lack of memory, are not reported.
 *
 * @param kind     a value of enum TvmgrSearchKind.
 * @param timeout  not used: a search always takes 3 s.
 * @retval 0   Running: the status is 1.
 * @retval -1  The worker thread could not be started; end the search with TVMGR_StopSearchPrinter.
 * @retval -2  No manager.
 * @retval -3  Out of memory. Network: the status is 0. USB: it is 1 until the worker ends the search, without
 *     printers. A worker runs in both cases.
 * @retval -7  No such kind. A worker runs all the same, and the status is 1 until it ends.
 * @retval -9  No network: the socket could not be opened or the datagram not be sent. The status is 0; a
 *     worker runs all the same.
 */
int32_t TVMGR_StartSearchPrinter(uint32_t kind, uint32_t timeout);

/**
 * Ends a search before its time and makes its results. May be called from another thread than the start.
 *
 * Network: asks the printers that have announced themselves for their names, all at the same time. Blocks as
 * long as the slowest of them takes for its two answers: up to 18 s for each, so at most 36 s, however many
 * are silent. The printers are asked once per search: a second stop, or the worker's, waits for that and
 * changes nothing. During TVMGR_Terminate: given up, with no results. The worker sleeps on (see
 * TVMGR_StartSearchPrinter and TVMGR_Terminate).
 *
 * @param kind  the kind that was started. TRAP: any other sets the status to 0 too, while the search goes on.
 * @retval 0   The results are made, the status is 0.
 * @retval -2  No manager.
 * @retval -3  Out of memory; the results are incomplete.
 * @retval -7  No such kind; the status is 0.
 */
int32_t TVMGR_StopSearchPrinter(uint32_t kind);

/** Never waits. @retval 1 A search runs. @retval 0 None does. @retval -2 No manager. */
int32_t TVMGR_GetSearchPrinterStatus(void);

/**
 * Reads the results of the last search of a kind.
 *
 * Blocks while the results of that kind are being made: at most 36 s (see TVMGR_StopSearchPrinter); not while
 * the status is 1 and the printers are not being asked yet. Never talks to a printer.
 *
 * @param kind    a value of enum TvmgrSearchKind.
 * @param index   from 0; beyond the last printer nothing is copied. TRAP: a negative index with a record
 *     ends the process (convention 2).
 * @param record  receives the printer; may be null. Its earlier texts are released; release the new ones
 *     after use.
 * @param count   receives the number of printers found; may be null.
 * @retval 0   Done; compare index and count.
 * @retval -2  No manager.
 * @retval -3  Out of memory; the record is unchanged.
 * @retval -7  No such kind.
 */
int32_t TVMGR_GetSearchedPrinterInfo(int32_t kind, int32_t index, TvmgrFoundPrinter* record, uint32_t* count);

/* -------------------------------------------------------------------------------------------------------- */
/* Fixed answers, kept for hosts that still call them */

struct HWND__;

/** @retval -7 Always. @retval -2 No manager. */
int32_t TVMGR_SearchPort(void* reserved1, void* reserved2, uint32_t reserved3);
/** @retval -103 Always. @retval -2 No manager. */
int32_t TVMGR_CheckPort(uint32_t reserved);
/** @retval 0 Always. @retval -2 No manager. */
int32_t TVMGR_SendPrnFile(void* reserved);
/** @retval 0 Always. @retval -2 No manager. */
int32_t TVMGR_GetDeviceInfo(void* reserved1, void* reserved2, uint32_t reserved3, uint32_t reserved4);
/**
 * Takes a window handle (HWND), without any effect: the module sends no messages. @retval 0 Always. @retval
 * -2 No manager.
 */
int32_t TVMGR_SetCallbackWnd(struct HWND__* window);

#ifdef __cplusplus
}  // extern "C"
#endif

/* The binary layout, fixed for 64-bit Windows. */
#ifdef __cplusplus
#define TVMGR_ASSERT_LAYOUT(condition, message) static_assert(condition, message)
#else
#define TVMGR_ASSERT_LAYOUT(condition, message) _Static_assert(condition, message)
#endif
TVMGR_ASSERT_LAYOUT(sizeof(TvmgrChar) == 2 && sizeof(void*) == 8, "UTF-16 text and 64-bit pointers");
TVMGR_ASSERT_LAYOUT(sizeof(bool) == 1, "bool is one byte");
TVMGR_ASSERT_LAYOUT(sizeof(TvmgrTextData) == 24 && offsetof(TvmgrTextData, length) == 8 &&
                        offsetof(TvmgrTextData, capacity) == 12 && offsetof(TvmgrTextData, references) == 16,
                    "text header");
TVMGR_ASSERT_LAYOUT(sizeof(TvmgrBackupInfo) == 16 && offsetof(TvmgrBackupInfo, settings) == 8 &&
                        offsetof(TvmgrBackupInfo, section_p) == 9 &&
                        offsetof(TvmgrBackupInfo, section_b) == 14,
                    "backup information");
TVMGR_ASSERT_LAYOUT(sizeof(TvmgrFoundPrinter) == 56 && offsetof(TvmgrFoundPrinter, text1) == 8 &&
                        offsetof(TvmgrFoundPrinter, text3) == 24 &&
                        offsetof(TvmgrFoundPrinter, value1) == 32 &&
                        offsetof(TvmgrFoundPrinter, value2) == 36 &&
                        offsetof(TvmgrFoundPrinter, text4) == 40 && offsetof(TvmgrFoundPrinter, text5) == 48,
                    "found printer");
#undef TVMGR_ASSERT_LAYOUT

#endif /* TAVIRA_TAVIRA_MANAGER_H_ */
