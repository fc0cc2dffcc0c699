/*
 * Loads everything by name at run time, without an import library: for hosts that start without the module, too.
 * Asks a printer for its state.
 *
 *   load_by_name [PORT]     PORT: a port of the print spooler, "USB001"
 */
#include <stdio.h>
#include <stdlib.h>
#include <tavira/TaviraManager.h>
#include <windows.h>

/* The header's declarations are the types: a member for each function that this host calls. */
typedef struct Module {
  int32_t (*initialize)(void);
  int32_t (*terminate)(void);
  int32_t (*update_port_com_info)(const TvmgrChar*, const TvmgrChar*);
  int32_t (*get_printer_status)(uint32_t*);
} Module;

/* Looks one function up; says so when the DLL lacks it. */
static FARPROC Find(HMODULE library, const char* name) {
  const FARPROC function = GetProcAddress(library, name);
  if (function == NULL) {
    fprintf(stderr, "TaviraManager.dll has no %s\n", name);
  }
  return function;
}

static bool FindAll(HMODULE library, Module* module) {
  /* By way of void (*)(void): a cast that compilers do not warn about. */
  typedef void (*Function)(void);
  module->initialize = (int32_t(*)(void))(Function)Find(library, "TVMGR_Initialize");
  module->terminate = (int32_t(*)(void))(Function)Find(library, "TVMGR_Terminate");
  module->update_port_com_info =
      (int32_t(*)(const TvmgrChar*, const TvmgrChar*))(Function)Find(library, "TVMGR_UpdatePortComInfo");
  module->get_printer_status = (int32_t(*)(uint32_t*))(Function)Find(library, "TVMGR_GetPrinterStatus");
  return module->initialize != NULL && module->terminate != NULL && module->update_port_com_info != NULL &&
         module->get_printer_status != NULL;
}

static int32_t AskForStatus(const Module* module, const wchar_t* port, uint32_t* status) {
  int32_t result = module->initialize();
  if (result == TVMGR_OK) {
    result = module->update_port_com_info(NULL, port);
  }
  if (result == TVMGR_OK) {
    result = module->get_printer_status(status);
  }
  /* Before FreeLibrary, also after a failed start. */
  module->terminate();
  return result;
}

int main(int count, char** arguments) {
  wchar_t port[260] = L"";
  if (count > 1 && mbstowcs(port, arguments[1], sizeof port / sizeof port[0] - 1) == (size_t)-1) {
    fprintf(stderr, "the port name cannot be read\n");
    return 2;
  }
  const HMODULE library = LoadLibraryW(L"TaviraManager.dll");
  if (library == NULL) {
    fprintf(stderr, "TaviraManager.dll cannot be loaded: error %lu\n", GetLastError());
    return 1;
  }
  Module module;
  uint32_t status = TVMGR_STATUS_UNKNOWN;
  int32_t result = TVMGR_NOT_INITIALIZED;
  if (FindAll(library, &module)) {
    result = AskForStatus(&module, count > 1 ? port : NULL, &status);
  }
  FreeLibrary(library);
  if (result != TVMGR_OK) {
    fprintf(stderr, "failed with %d\n", (int)result);
    return 1;
  }
  printf("status: %u%s\n", (unsigned)status,
         status == TVMGR_STATUS_UNKNOWN ? " (the printer does not answer)" : "");
  return status == TVMGR_STATUS_UNKNOWN ? 1 : 0;
}
