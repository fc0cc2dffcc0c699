#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tvmgr {

// What the command line says, as plain records: the commands know nothing of the argument parser. All texts
// are UTF-8. `yes`: what is to be overwritten, deleted or reset is confirmed already. `dry_run`: the printer is only
// read, and what would be done is shown.

/** Options that every command takes. */
struct tagGlobalOptions {
  std::string port;                /**< port of the print spooler; empty: none */
  std::string device;              /**< USB device path; empty: none */
  std::string address;             /**< host name or address; empty: none */
  bool json = false;               /**< results on stdout as JSON */
  bool quiet = false;              /**< no progress and no remarks on stderr, errors only */
  bool verbose = false;            /**< every call of the module with result and duration, on stderr */
  bool no_color = false;           /**< verdicts without colour on a terminal, too */
  bool no_check = false;           /**< do not ask for the printer's status before long work */
  std::string trace;               /**< file that gets every call of the module; empty: none */
  bool trace_contents = false;     /**< contents of files in it, too */
  std::optional<double> timeout_s; /**< seconds until the printer is asked whether it is there; 0: never */
};

/** Options of a run on several printers. */
struct tagBatchOptions {
  std::string printers; /**< a list, a file or "found"; empty: no such run */
  std::uint32_t jobs = 8;
  double limit_s = 3600; /**< seconds until the work on one printer is ended; 0: never */
  bool yes = false;
};

struct tagGetOptions {
  std::vector<std::string> settings; /**< numbers, keys, groups or patterns */
  bool all = false;
  std::string labels; /**< a labels file; empty: none */
};

struct tagSetOptions {
  std::vector<std::string> assignments; /**< KEY=VALUE */
  bool keep_resolution = false;
  bool dry_run = false;
  std::string labels;
  bool force = false; /**< write what the labels do not allow */
};

struct tagPrefixOptions {
  std::vector<std::string> characters; /**< control, format, delimiter; empty: not to be set */
  bool to_default = false;
  bool yes = false;
};

struct tagStatusOptions {
  bool watch = false;
  bool every_poll = false;            /**< a line for each poll, not only for each change */
  double interval_s = 1.0;            /**< seconds from poll to poll */
  std::optional<std::uint32_t> count; /**< polls */
  std::optional<double> duration_s;   /**< seconds */
};

/** Bytes for the printer: from a file, from the command line, or from stdin. */
struct tagDataSource {
  std::string file;
  std::optional<std::string> text;
  std::string stdin_mark; /**< "-" or empty */
};

struct tagOperationOptions {
  std::string name;
  bool list = false;
  bool yes = false;
  tagDataSource data;
};

struct tagSendOptions {
  tagDataSource data;
  bool allow_resolution_change = false;
};

struct tagFilesOptions {
  std::string list; /**< list or group of lists; empty: all */
};

struct tagFetchOptions {
  std::string name;   /**< or a pattern */
  std::string output; /**< file of the host, of a pattern a folder; empty: stdout */
  double wait_s = 60.0;
  bool unlisted = false; /**< do not look the name up in the printer's lists first */
  bool yes = false;
};

struct tagPutOptions {
  std::string file;
  std::string name;            /**< empty: the file's own name */
  std::string kind;            /**< empty: from the extension */
  std::uint32_t row_bytes = 0; /**< bytes in one row of a GRF graphic; 0: not stated */
  bool dry_run = false;
  bool yes = false;
};

struct tagBackupOptions {
  std::string file;
  std::string sections; /**< letters or names; empty: settings and all stored files */
  bool yes = false;
};

struct tagBackupCheckOptions {
  std::string file;
};

struct tagBackupDiffOptions {
  std::string first;
  std::string second;
};

struct tagRestoreOptions {
  std::string file;
  bool settings = false;          /**< of the backup only the settings */
  bool files = false;             /**< of the backup only files */
  std::vector<std::string> names; /**< with `files`: names or patterns; empty: all */
  bool dry_run = false;
  std::string labels; /**< with `settings` */
  bool yes = false;
  bool force = false; /**< send the file whatever it holds */
};

struct tagExportOptions {
  std::string file;
  bool all = false;              /**< also what belongs to one device */
  std::vector<std::string> only; /**< numbers, keys, groups or patterns; empty: all */
  bool yes = false;
};

struct tagApplyOptions {
  std::string file;
  bool all = false;
  std::vector<std::string> only;
  bool yes = false;
  bool dry_run = false;
  std::string labels;
  bool force = false; /**< to another model, and what the labels do not allow */
};

struct tagDiffOptions {
  std::string first; /**< a file, or a printer: "printer", "port:NAME", "address:HOST", "device:PATH" */
  std::string second;
  bool all = false;
  std::string labels;
};

struct tagSearchOptions {
  std::string kind; /**< "usb", "network" or "all" */
  bool forgets = false;
};

struct tagUseOptions {
  std::string printer; /**< number of the last search, address, port or device path; empty: show */
  std::string as;      /**< "port", "address" or "device"; empty: by the look of it */
  bool clear = false;
};

struct tagCodesOptions {
  std::optional<std::int32_t> code; /**< none: all of them */
};

struct tagDoctorOptions {
  bool reads_settings = false; /**< a full load, which makes some printers save */
};

struct tagRemoveOptions {
  std::vector<std::string> names; /**< or patterns */
  bool dry_run = false;
  bool yes = false;
};

}  // namespace tvmgr
