/*
 * Reads three settings of a printer.
 *
 *   read_settings [PORT]     PORT: a port of the print spooler, "USB001"
 */
#include <stdio.h>
#include <stdlib.h>
#include <tavira/TaviraManager.h>

/* Prints one stored value. Returns false when the printer gave none. */
static bool PrintSetting(const char* name, int32_t id) {
  int32_t length = 0;
  if (!TVMGR_GetSettingValue(id, NULL, &length)) {
    printf("%s: not answered\n", name);
    return false;
  }
  uint8_t* value = calloc((size_t)length + 1, 1);
  if (value == NULL) {
    return false;
  }
  /* The bytes of an empty value must not be asked for. */
  if (length > 0) {
    TVMGR_GetSettingValue(id, value, &length);
  }
  printf("%s: %s\n", name, (const char*)value);
  free(value);
  return true;
}

static bool ReadSettings(const wchar_t* port) {
  int32_t result = TVMGR_UpdatePortComInfo(NULL, port);
  if (result != TVMGR_OK) {
    fprintf(stderr, "choosing the printer: %d\n", (int)result);
    return false;
  }
  /* Is it there? A silent printer shows after 3 s here; every later wait for it would last a minute. */
  uint32_t status = TVMGR_STATUS_UNKNOWN;
  result = TVMGR_GetPrinterStatus(&status);
  if (result != TVMGR_OK) {
    fprintf(stderr, "asking for the status: %d\n", (int)result);
    return false;
  }
  if (status == TVMGR_STATUS_UNKNOWN) {
    fprintf(stderr, "the printer does not answer\n");
    return false;
  }
  /* Everything at once: a load of a single setting only refreshes what such a load has stored before. */
  result = TVMGR_LoadSetting(true, 0);
  if (result != TVMGR_OK) {
    fprintf(stderr, "reading the settings: %d\n", (int)result);
    return false;
  }
  /* A printer that stays silent is no error so far; it shows in the values. */
  const bool first = PrintSetting("first resolution", TVMGR_SETTING_CLR_Z);
  const bool second = PrintSetting("second resolution", TVMGR_SETTING_CLR_P);
  const bool third = PrintSetting("third resolution", TVMGR_SETTING_CLR_R);
  return first && second && third;
}

int main(int count, char** arguments) {
  wchar_t port[260] = L"";
  if (count > 1 && mbstowcs(port, arguments[1], sizeof port / sizeof port[0] - 1) == (size_t)-1) {
    fprintf(stderr, "the port name cannot be read\n");
    return 2;
  }
  const int32_t result = TVMGR_Initialize();
  if (result != TVMGR_OK) {
    fprintf(stderr, "TVMGR_Initialize: %d (-5: Ferrolink.dll is missing or incomplete)\n", (int)result);
  }
  const bool done = result == TVMGR_OK && ReadSettings(count > 1 ? port : NULL);
  /* Also after a failed start: a manager may be in place. */
  TVMGR_Terminate();
  return done ? 0 : 1;
}
