"""TaviraManager for Python 3.8 and later: the functions of TaviraManager.h as one object. No dependency but the module.

    with tavira.Manager() as printer:
        printer.choose_port("USB001")
        printer.load()
        print(printer.value(tavira.Setting.CLR_Z))

What the functions do, how long they block and what their codes mean stands in TaviraManager.h, whose conventions hold here
too. This file says only what is different:

- An Error is raised for every result but Result.OK. It carries the code, its words and the function. (OSError: the module
  itself cannot be loaded.)
- Values and answers that may be missing are None, which is also what a silent printer looks like.
- What would end the process (a negative index, a buffer that is too small, the bytes of an empty value) and what would be cut
  short (a zero character inside a text, a number that does not fit) is an Error, and nothing is called.

One thread, one Manager at a time. Only a printer search can be ended early; every other call runs to its end, and other
Python threads run meanwhile.
"""

from __future__ import annotations

import ctypes
import enum
import operator
import os
import sys
import time
from ctypes import POINTER, byref, c_bool, c_int32, c_uint8, c_uint16, c_uint32, c_void_p
from dataclasses import dataclass
from typing import Any, Callable, Dict, Iterable, List, Mapping, Optional, Tuple, Union

__version__ = "1.0.0"
__all__ = ["BackupSections", "Error", "FileList", "FoundPrinter", "Library", "Manager", "Operation", "Request", "Result",
           "SearchKind", "Setting", "Status", "result_words"]


class Result(enum.IntEnum):
    """Result codes. Any other value comes from Ferrolink.dll."""

    OK = 0
    FILE_TOO_LARGE = 4
    PORT_NOT_READY = -1
    NOT_INITIALIZED = -2
    OUT_OF_MEMORY = -3
    PORT_LIBRARY_MISSING = -5
    BAD_ARGUMENT = -7
    SEARCH_FAILED = -9
    PAYLOAD_UNREADABLE = -10
    FILE_ERROR = -63
    FILE_READ_ERROR = -65
    NOT_CONFIRMED = -82
    CHECK_PORT_UNSUPPORTED = -103


_WORDS: Dict[int, str] = {
    Result.OK: "done",
    Result.FILE_TOO_LARGE: "the backup file has grown past 1 GiB; it was closed properly before that",
    Result.PORT_NOT_READY: "Ferrolink.dll is missing or incomplete, or the search could not start its worker",
    Result.NOT_INITIALIZED: "there is no manager, or it has no port library",
    Result.OUT_OF_MEMORY: "memory ran out",
    Result.PORT_LIBRARY_MISSING: "Ferrolink.dll is missing or incomplete",
    Result.BAD_ARGUMENT: "a bad argument, nothing to send, or an operation that does not exist",
    Result.SEARCH_FAILED: "the network search could not open its socket or send its broadcast",
    Result.PAYLOAD_UNREADABLE: "the stored file came back in a form that cannot be decoded",
    Result.FILE_ERROR: "the file on this computer cannot be created, opened or written",
    Result.FILE_READ_ERROR: "the file on this computer cannot be read whole",
    Result.NOT_CONFIRMED: "the printer took the command but still shows another state",
    Result.CHECK_PORT_UNSUPPORTED: "port checks are not supported",
}


def result_words(code: int) -> str:
    """What a result code means. A code of the port library has one text for all."""
    return _WORDS.get(code, "a code of Ferrolink.dll, passed through")


class Error(Exception):
    """A function of the module that did not answer OK, or that was not called because its arguments are wrong."""

    def __init__(self, function: str, code: int, words: Optional[str] = None) -> None:
        self.function = function
        self.code = code
        self.words = result_words(code) if words is None else words
        super().__init__(f"{function}: {int(code)}, {self.words}")


class Setting(enum.IntEnum):
    """Settings, named after the printer's own keys; ST is written only, BACKGROUND is read only."""

    IMP_S = 1
    IMF_V = 2
    CLR_Z = 3
    CLR_P = 4
    CLR_R = 5
    CLM_P = 6
    CLM_S = 7
    CLM_D = 8
    CLM_T = 9
    CLP_M = 10
    CMP_S = 11
    CMP_F = 12
    CLM_F = 13
    CLS_P = 14
    CLS_L = 15
    CLS_G = 16
    CLW_T = 17
    CLW_B = 18
    CLW_R = 19
    CLW_L = 20
    CPC_E = 21
    CLE_T = 22
    CLE_M = 23
    CLP_O = 24
    CPC_C = 25
    CPC_D = 26
    CPC_P = 27
    CPC_B = 28
    CBW_C = 29
    CFE_T = 35
    CLB_I = 36
    BACKGROUND = 37
    CMT_S = 38
    CMT_T = 39
    CMF_P = 40
    CMF_H = 41
    CMP_M = 42
    CUB_Z = 43
    CSL_N = 44
    CWR_P = 45
    ST = 46
    CUI_B = 47
    CUI_F = 48
    CUI_C = 49
    CUL_B = 50
    CUL_C = 51
    CUL_L = 52
    CMV_S = 53
    CMV_C = 54
    CMV_I = 55
    CMN_S = 56
    CMV_O = 57
    CMU_A = 58
    CMU_B = 59
    CMU_C = 60
    CMU_D = 61
    CMU_E = 62
    CMU_F = 63
    CMU_G = 64
    CCC_T = 65
    CCC_C = 66
    CCC_D = 67
    SCM_1 = 68
    SCM_2 = 69
    SCM_O = 70
    SCM_C = 71
    SCN_L = 72
    SCN_C = 73
    CPC_Y = 74
    CBB_M = 76
    CLA_C = 77
    CFA_W = 78
    INU_S = 79
    INU_N = 80
    INU_U = 81
    INU_P = 82
    INU_V = 83
    CMP_U = 84


class FileList(enum.IntEnum):
    """Lists of the files that the printer stores."""

    PNG = 30
    TTF = 31
    TTE = 32
    FMT = 33
    CNV = 34
    BACKGROUND = 36
    ZPL = 75
    GRF = 85


class Operation(enum.IntEnum):
    """Operations of Manager.execute."""

    NONE = 0x1001000
    HEAD_MAINTENANCE = 0x1001001
    HEAD_CHECK = 0x1001002
    MEDIA_CALIBRATION = 0x1001003
    FACTORY_RESET = 0x1001004
    INITIALIZE_MEMORY = 0x1001005
    SEND_DATA = 0x1001006
    PRINT_CONFIGURATION = 0x1001007
    WIPE_FONTS = 0x1001008
    WIPE_BARCODES = 0x1001009
    WIPE_GRAPHICS = 0x100100A
    WIPE_FORMATS = 0x100100B
    RESET_PREFIX = 0x100100C


class Request(enum.IntEnum):
    """Kinds of Manager.register and Manager.delete."""

    REGISTER_GRAPHIC = 0x1001000
    REGISTER_FORMAT = 0x1001001
    REGISTER_FONT = 0x1001003
    DELETE_GRAPHIC = 0x1001004
    DELETE_FORMAT = 0x1001005
    DELETE_FONT = 0x1001007
    BACKGROUND = 0x1001008


class Status(enum.IntEnum):
    """Printer states. UNKNOWN: the printer does not answer."""

    UNKNOWN = 0
    IDLE = 1
    BUSY = 2
    OTHER = 3


class SearchKind(enum.IntEnum):
    """Kinds of printer search."""

    USB = 0
    NETWORK = 1


@dataclass
class FoundPrinter:
    """One printer: of a search, or to be chosen. Empty members say nothing."""

    kind: int = SearchKind.USB
    name: str = ""  # USB: model. Network: first name. Of Manager.choice: the port name
    identification: str = ""  # USB: IEEE 1284 device ID. Network: second name
    device_path: str = ""  # USB
    vendor_id: int = 0  # USB; 0 when not read
    product_id: int = 0  # USB; 0 when not read
    product_name: str = ""  # USB
    address: str = ""  # Network


@dataclass
class BackupSections:
    """What a backup is to hold."""

    settings: bool = True
    section_p: bool = True  # named in the header only
    graphics: bool = True
    formats: bool = True
    fonts: bool = True
    section_c: bool = True  # named in the header only
    background: bool = True


Bytes = Union[bytes, bytearray, str]
Path = Union[str, "os.PathLike[str]"]


# --- The binary interface ---------------------------------------------------------------------------------------------


class _BackupInfo(ctypes.Structure):
    _fields_ = [("path", c_void_p)] + [(flag, c_uint8) for flag in BackupSections.__dataclass_fields__]


class _Record(ctypes.Structure):
    _fields_ = [("kind", c_int32), ("text1", c_void_p), ("text2", c_void_p), ("text3", c_void_p), ("value1", c_int32),
                ("value2", c_int32), ("text4", c_void_p), ("text5", c_void_p)]


class _TextHeader(ctypes.Structure):
    """Stands in front of the characters of a text that the module has written."""

    _fields_ = [("manager", c_void_p), ("length", c_int32), ("capacity", c_int32), ("references", c_int32),
                ("padding", c_int32)]


_TEXTS = ("text1", "text2", "text3", "text4", "text5")
_FREE = ctypes.CFUNCTYPE(None, c_void_p, c_void_p)
_FREE_SLOT = 1

if (ctypes.sizeof(_BackupInfo), ctypes.sizeof(_Record), ctypes.sizeof(_TextHeader)) != (16, 56, 24):
    raise ImportError("TaviraManager.dll has 64 bits: it needs a 64-bit Python")


def _header(text: int) -> _TextHeader:
    return _TextHeader.from_address(text - ctypes.sizeof(_TextHeader))


def _read_text(text: Optional[int]) -> str:
    if not text:
        return ""
    return ctypes.string_at(text, _header(text).length * 2).decode("utf-16-le", "surrogatepass")


def _release_text(text: Optional[int]) -> None:
    """Frees a text that the module has written, through the manager in its own header.

    Python cannot lower the count atomically, and need not: a text that is ours alone is freed, and the only one that the
    module shares is its empty one, which it never frees.
    """
    if not text:
        return
    header = _header(text)
    if header.references <= 1:
        functions = c_void_p.from_address(header.manager).value or 0
        free = c_void_p.from_address(functions + _FREE_SLOT * ctypes.sizeof(c_void_p)).value or 0
        _FREE(free)(header.manager, ctypes.addressof(header))


_SIGNATURES: Dict[str, Tuple[Any, ...]] = {
    "TVMGR_Backup": (c_int32, c_uint8),
    "TVMGR_CheckPort": (c_int32, c_uint32),
    "TVMGR_ClearLoadList": (c_int32,),
    "TVMGR_ClearRegistList": (c_int32,),
    "TVMGR_ClearUpdateList": (c_int32,),
    "TVMGR_DeleteData": (c_int32,),
    "TVMGR_DirectSendCommand": (c_int32, c_void_p, c_int32, c_bool),
    "TVMGR_ExecutePrinterOperation": (c_int32,),
    "TVMGR_GetDeviceInfo": (c_int32, c_void_p, c_void_p, c_uint32, c_uint32),
    "TVMGR_GetPrinterDeviceInfo": (c_int32, POINTER(_Record)),
    "TVMGR_GetPrinterStatus": (c_int32, POINTER(c_uint32)),
    "TVMGR_GetRegistFileArrayData": (c_int32, c_int32, c_int32, c_void_p, POINTER(c_uint32)),
    "TVMGR_GetRegistFileArraySize": (c_int32, c_int32, POINTER(c_uint32)),
    "TVMGR_GetSearchPrinterStatus": (c_int32,),
    "TVMGR_GetSearchedPrinterInfo": (c_int32, c_int32, c_int32, POINTER(_Record), POINTER(c_uint32)),
    "TVMGR_GetSettingValue": (c_bool, c_int32, c_void_p, POINTER(c_int32)),
    "TVMGR_GetStoredData": (c_int32, c_void_p, POINTER(c_uint32)),
    "TVMGR_Initialize": (c_int32,),
    "TVMGR_IsDefaultPrefix": (c_int32, POINTER(c_uint8)),
    "TVMGR_LoadSetting": (c_int32, c_bool, c_int32),
    "TVMGR_LoadSettingByList": (c_int32, c_bool),
    "TVMGR_LoadStoredData": (c_int32, c_void_p, c_uint8, c_uint32),
    "TVMGR_RegistData": (c_int32,),
    "TVMGR_Restore": (c_int32, c_void_p),
    "TVMGR_SearchPort": (c_int32, c_void_p, c_void_p, c_uint32),
    "TVMGR_SendPrnFile": (c_int32, c_void_p),
    "TVMGR_SetCallbackWnd": (c_int32, c_void_p),
    "TVMGR_SetExecuteList": (c_int32, c_uint32, c_void_p, c_int32),
    "TVMGR_SetLoadList": (c_int32, c_uint32),
    "TVMGR_SetUpdateList": (c_int32, c_uint32, c_void_p, c_int32),
    "TVMGR_StartSearchPrinter": (c_int32, c_uint32, c_uint32),
    "TVMGR_StopSearchPrinter": (c_int32, c_uint32),
    "TVMGR_Terminate": (c_int32,),
    "TVMGR_UpdateBackupInfo": (c_int32, POINTER(_BackupInfo)),
    "TVMGR_UpdatePortComInfo": (c_int32, POINTER(_Record), c_void_p),
    "TVMGR_UpdatePrefix": (c_int32, c_uint8, c_uint8, c_uint8),
    "TVMGR_UpdatePrinterSetting": (c_int32,),
    "TVMGR_UpdatePrinterSettingNoChangeDPI": (c_int32,),
    "TVMGR_UpdateRegistList": (c_int32, c_uint32, c_void_p, c_uint32, c_void_p, c_uint32),
}


def _load(path: str) -> ctypes.CDLL:
    """A damaged file makes Windows ask the user, in a box that blocks until it is answered: not here."""
    if sys.platform != "win32":
        return ctypes.CDLL(path)
    kernel32 = ctypes.WinDLL("kernel32")
    earlier = c_uint32()
    is_quiet = kernel32.SetThreadErrorMode(kernel32.GetThreadErrorMode() | 1, byref(earlier))  # SEM_FAILCRITICALERRORS
    try:
        return ctypes.CDLL(path)
    finally:
        if is_quiet:
            kernel32.SetThreadErrorMode(earlier.value, None)


class Library:
    """The module's functions by their own names, with their argument types: for what Manager does not offer.

    `path`: the module; without one, what the environment variable TAVIRA_LIBRARY names, else TaviraManager.dll beside this
    file, else where the system looks.
    """

    def __init__(self, path: Optional[Path] = None) -> None:
        path = os.fspath(path or "") or os.environ.get("TAVIRA_LIBRARY") or self._default_path()
        if sys.platform == "win32" and os.path.dirname(path):
            # The module asks for its port library by name, which Windows looks for beside python.exe. Once it is loaded from
            # beside the module, it is found.
            path = os.path.abspath(path)
            port_library = os.path.join(os.path.dirname(path), "Ferrolink.dll")
            try:
                self._port_library: Optional[ctypes.CDLL] = _load(port_library)
            except OSError:
                self._port_library = None  # missing or damaged: the module will say so
        try:
            self._library = _load(path)
        except OSError as error:
            raise OSError(f"{path} cannot be loaded: {error}") from error  # Windows' own words name no file
        for name, (result, *arguments) in _SIGNATURES.items():
            function = getattr(self._library, name)
            function.restype = result
            function.argtypes = arguments
            setattr(self, name, function)

    @staticmethod
    def _default_path() -> str:
        name = "TaviraManager.dll" if sys.platform == "win32" else "libTaviraManager.so"
        beside = os.path.join(os.path.dirname(os.path.abspath(__file__)), name)
        return beside if os.path.exists(beside) else name

    def __getattr__(self, name: str) -> Any:  # for type checkers: the functions are made by the constructor
        raise AttributeError(name)


# --- What goes in -----------------------------------------------------------------------------------------------------

_INT32 = (-(2**31), 2**31 - 1)
_UINT32 = (0, 2**32 - 1)


def _number(function: str, value: int, limits: Tuple[int, int] = _INT32) -> int:
    """ctypes would cut it to its last bits. Raises a TypeError for what is no integer."""
    value = operator.index(value)
    if not limits[0] <= value <= limits[1]:
        raise Error(function, Result.BAD_ARGUMENT, f"{value} does not fit")
    return value


def _index(function: str, index: int) -> int:
    """The module raises a C++ exception for a negative one, which ends a process of another language."""
    return _number(function, index, (0, _INT32[1]))


def _bytes(function: str, value: Bytes, limits: Tuple[int, int] = _INT32) -> Tuple[bytes, int]:
    if not isinstance(value, (str, bytes, bytearray)):
        raise TypeError(f"{function}: bytes or str expected, not {type(value).__name__}")  # bytes(3) would be three zeros
    try:
        data = value.encode("ascii") if isinstance(value, str) else bytes(value)
    except UnicodeEncodeError:
        raise Error(function, Result.BAD_ARGUMENT, "a str may hold ASCII only: give bytes") from None
    return data, _number(function, len(data), limits)


def _utf16(function: str, text: str) -> Any:
    """Zero-terminated UTF-16: Python's own wide characters have 4 bytes on some systems."""
    if not isinstance(text, str):
        raise TypeError(f"{function}: str expected, not {type(text).__name__}")
    if "\0" in text:
        raise Error(function, Result.BAD_ARGUMENT, "a zero character inside a text")
    encoded = text.encode("utf-16-le", "surrogatepass") + b"\0\0"
    return (c_uint16 * (len(encoded) // 2)).from_buffer_copy(encoded)


class Manager:
    """The module's one manager, from construction to close(), or until nobody holds it."""

    def __init__(self, library: Union[Library, Path, None] = None) -> None:
        """Raises also when there is a manager already, made by whomever: a second one would leak the first."""
        self._library = library if isinstance(library, Library) else Library(library)
        self._is_open = False
        if self._library.TVMGR_GetSearchPrinterStatus() != Result.NOT_INITIALIZED:
            raise Error("TVMGR_Initialize", Result.BAD_ARGUMENT, "there is a manager already")
        code = self._library.TVMGR_Initialize()
        if code != Result.OK:
            self._library.TVMGR_Terminate()  # a failed start may leave a manager in place
            raise Error("TVMGR_Initialize", code)
        self._is_open = True

    def close(self) -> None:
        """Waits for the worker of the last search: until 3 s after its start, also when it was stopped before.

        Printers that are being asked for their names are given up. May be called twice.
        """
        if self._is_open:
            self._is_open = False
            self._library.TVMGR_Terminate()

    def __del__(self) -> None:  # else no other one could be made after one that was let go
        if getattr(self, "_is_open", False):
            self.close()

    def __enter__(self) -> Manager:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def _function(self, name: str) -> Any:
        if not self._is_open:
            raise Error(name, Result.NOT_INITIALIZED)
        return getattr(self._library, name)

    def _call(self, name: str, *arguments: Any) -> None:
        code = self._function(name)(*arguments)
        if code != Result.OK:
            raise Error(name, code)

    # --- Choosing the printer. One Manager for each printer: see convention 10 of TaviraManager.h. ---

    def choose(self, printer: FoundPrinter, port_name: Optional[str] = None) -> None:
        """By device path or address. Without a port name, that of a printer port installed for it is taken."""
        name = "TVMGR_UpdatePortComInfo"
        texts = [_utf16(name, text) for text in (printer.name, printer.identification, printer.device_path,
                                                 printer.product_name, printer.address)]
        addresses = [ctypes.addressof(text) for text in texts]
        record = _Record(_number(name, printer.kind), *addresses[:3], _number(name, printer.vendor_id),
                         _number(name, printer.product_id), *addresses[3:])
        self._call(name, byref(record), _utf16(name, port_name) if port_name else None)

    def choose_address(self, address: str) -> None:
        self.choose(FoundPrinter(kind=SearchKind.NETWORK, address=address))

    def choose_port(self, port_name: str) -> None:
        """A port of the print spooler, such as "USB001"."""
        self._call("TVMGR_UpdatePortComInfo", None, _utf16("TVMGR_UpdatePortComInfo", port_name))

    def choose_default(self) -> None:
        """Ferrolink.dll gets empty texts and takes what it takes by default."""
        self._call("TVMGR_UpdatePortComInfo", None, None)

    def choice(self) -> FoundPrinter:
        return self._read_record(lambda record: self._call("TVMGR_GetPrinterDeviceInfo", byref(record)))

    @staticmethod
    def _read_record(fill: Callable[[_Record], None]) -> FoundPrinter:
        record = _Record()
        try:
            fill(record)
            texts = [_read_text(getattr(record, text)) for text in _TEXTS]
        finally:
            for text in _TEXTS:
                _release_text(getattr(record, text))
        return FoundPrinter(record.kind, texts[0], texts[1], texts[2], record.value1, record.value2, texts[3], texts[4])

    # --- Settings ---

    def load(self, setting: Optional[int] = None) -> None:
        """Reads everything (settings, file lists, background file), or refreshes one setting that this has stored before.

        A silent printer is no error.
        """
        name = "TVMGR_LoadSetting"
        self._call(name, setting is None, 0 if setting is None else _number(name, setting))

    def load_these(self, settings: Iterable[int], guard_resolution: bool = True) -> None:
        """Refreshes these in one transaction. Replaces the load list."""
        self._call("TVMGR_ClearLoadList")
        for setting in settings:
            self._call("TVMGR_SetLoadList", _number("TVMGR_SetLoadList", setting, _UINT32))
        self._call("TVMGR_LoadSettingByList", guard_resolution)

    def value(self, setting: int) -> Optional[bytes]:
        """The bytes that the printer reported when it was last loaded; None when it reported nothing."""
        get = self._function("TVMGR_GetSettingValue")
        setting = _number("TVMGR_GetSettingValue", setting)
        length = c_int32()
        if not get(setting, None, byref(length)):
            return None
        if length.value <= 0:
            return b""  # the bytes of an empty value must not be asked for
        buffer = ctypes.create_string_buffer(length.value)
        return buffer.raw if get(setting, buffer, byref(length)) else None

    def values(self) -> Dict[Setting, bytes]:
        """All that are stored, in the order of their numbers."""
        found = {setting: self.value(setting) for setting in Setting}
        return {setting: value for setting, value in found.items() if value is not None}

    def update(self, setting: int, value: Bytes, guard_resolution: bool = True) -> None:
        """update_these with one setting."""
        self.update_these({setting: value}, guard_resolution)

    def update_these(self, changes: Mapping[int, Bytes], guard_resolution: bool = True) -> None:
        """Writes, saves, and reads back: returns only when the printer shows every value. Replaces the update list.

        Raises an Error with Result.NOT_CONFIRMED when it was sent but the printer shows another value. Some are not compared:
        see TVMGR_UpdatePrinterSetting.
        """
        name = "TVMGR_SetUpdateList"
        self._call("TVMGR_ClearUpdateList")
        for setting, value in changes.items():
            self._call(name, _number(name, setting, _UINT32), *_bytes(name, value))
        self._call("TVMGR_UpdatePrinterSetting" if guard_resolution else "TVMGR_UpdatePrinterSettingNoChangeDPI")

    def update_prefix(self, control: Bytes, format: Bytes, delimiter: Bytes) -> None:
        """Three characters, one byte each."""
        name = "TVMGR_UpdatePrefix"
        characters = [_bytes(name, character)[0] for character in (control, format, delimiter)]
        if [len(character) for character in characters] != [1, 1, 1]:
            raise Error(name, Result.BAD_ARGUMENT, "a prefix character is one byte")
        self._call(name, *(character[0] for character in characters))

    def has_default_prefix(self) -> bool:
        """True also for a silent printer."""
        is_default = c_uint8()
        self._call("TVMGR_IsDefaultPrefix", byref(is_default))
        return is_default.value != 0

    # --- Status, commands, operations ---

    def status(self) -> Status:
        """Status.UNKNOWN: the printer does not answer."""
        status = c_uint32()
        self._call("TVMGR_GetPrinterStatus", byref(status))
        return Status(status.value)

    def send(self, command: Bytes, allow_resolution_change: bool = False) -> None:
        name = "TVMGR_DirectSendCommand"
        self._call(name, *_bytes(name, command), allow_resolution_change)

    def execute(self, operation: int, data: Bytes = b"") -> None:
        """Waits until the printer is no longer busy, up to 60 s after the command (head maintenance 300 s).

        Longer for a silent one: see TVMGR_ExecutePrinterOperation. `data`: for Operation.SEND_DATA.
        """
        name = "TVMGR_SetExecuteList"
        if operation == Operation.SEND_DATA and not data:
            raise Error(name, Result.BAD_ARGUMENT)  # the module would send the data of an earlier call
        self._call(name, _number(name, operation, _UINT32), *_bytes(name, data))
        self._call("TVMGR_ExecutePrinterOperation")

    # --- Stored files ---

    def file_count(self, file_list: int) -> int:
        name = "TVMGR_GetRegistFileArraySize"
        count = c_uint32()
        self._call(name, _number(name, file_list), byref(count))
        return count.value

    def file_name(self, file_list: int, index: int) -> str:
        name = "TVMGR_GetRegistFileArrayData"
        file_list, index = _number(name, file_list), _index(name, index)
        length = c_uint32()
        self._call(name, file_list, index, None, byref(length))
        length.value += 1  # for the terminator
        characters = (c_uint16 * length.value)()
        self._call(name, file_list, index, characters, byref(length))
        return bytes(characters)[:-2].decode("utf-16-le", "surrogatepass")

    def files(self, file_list: int) -> List[str]:
        """The names that the last full load, registration, deletion or operation found; nameless entries are left out."""
        names = (self.file_name(file_list, index) for index in range(self.file_count(file_list)))
        return [name for name in names if name]

    def fetch(self, file_list: int, file_name: str, timeout_ms: int = 60000) -> Optional[bytes]:
        """A stored file, or None: there is no such file, or the printer was silent.

        What the printer sends compressed (":Z64:") stays so.
        """
        name = "TVMGR_LoadStoredData"
        mode = 1 if file_list in (FileList.FMT, FileList.ZPL) else 0
        self._call(name, _utf16(name, file_name), mode, _number(name, timeout_ms, _UINT32))
        length = c_uint32()
        self._call("TVMGR_GetStoredData", None, byref(length))
        if length.value == 0:
            return None
        buffer = ctypes.create_string_buffer(length.value)
        self._call("TVMGR_GetStoredData", buffer, byref(length))
        return buffer.raw

    def register(self, request: int, command: Bytes, secondary: Bytes = b"") -> None:
        """Stores a file, given as the printer's own download command, and proves it (but a format) by listing the files."""
        self._set_request(request, command, secondary)
        self._call("TVMGR_RegistData")

    def delete(self, request: int, file_name: Bytes) -> None:
        """Deletes a stored file and proves it (but the background file) by listing the files; a silent printer lists none."""
        self._set_request(request, file_name, b"")
        self._call("TVMGR_DeleteData")

    def _set_request(self, request: int, primary: Bytes, secondary: Bytes) -> None:
        name = "TVMGR_UpdateRegistList"
        self._call(name, _number(name, request, _UINT32), *_bytes(name, primary, _UINT32), *_bytes(name, secondary, _UINT32))

    # --- Backup and restore ---

    def backup(self, path: Path, sections: Optional[BackupSections] = None, reload: bool = True) -> None:
        name = "TVMGR_UpdateBackupInfo"
        text = _utf16(name, os.fspath(path))
        sections = sections or BackupSections()
        flags = [1 if getattr(sections, flag) else 0 for flag in BackupSections.__dataclass_fields__]
        self._call(name, byref(_BackupInfo(ctypes.addressof(text), *flags)))
        self._call("TVMGR_Backup", 1 if reload else 0)

    def restore(self, path: Path) -> None:
        """Sends a backup file. That the printer took it shows in the values, or in a second backup."""
        self._call("TVMGR_Restore", _utf16("TVMGR_Restore", os.fspath(path)))

    # --- Finding printers ---

    def start_search(self, kind: int) -> None:
        """Starts a search, which ends after 3 s, or up to 36 s later when printers that it asks have fallen silent.

        Waits for the worker of an earlier one as long. After an Error none runs.
        """
        name = "TVMGR_StartSearchPrinter"
        kind = _number(name, kind, _UINT32)
        code = self._function(name)(kind, 0)
        if code != Result.OK:
            self._library.TVMGR_StopSearchPrinter(kind)
            raise Error(name, code)

    def stop_search(self, kind: int) -> None:
        """Ends a search before its time. Another thread may call it."""
        self._call("TVMGR_StopSearchPrinter", _number("TVMGR_StopSearchPrinter", kind, _UINT32))

    def is_searching(self) -> bool:
        code: int = self._function("TVMGR_GetSearchPrinterStatus")()
        if code < 0:
            raise Error("TVMGR_GetSearchPrinterStatus", code)
        return code == 1

    def found_count(self, kind: int) -> int:
        name = "TVMGR_GetSearchedPrinterInfo"
        count = c_uint32()
        self._call(name, _number(name, kind), 0, None, byref(count))
        return count.value

    def found(self, kind: int, index: int) -> FoundPrinter:
        printer = self._read_found(kind, index)
        if printer is None:
            raise Error("TVMGR_GetSearchedPrinterInfo", Result.BAD_ARGUMENT, "no printer with this index was found")
        return printer

    def _read_found(self, kind: int, index: int) -> Optional[FoundPrinter]:
        """None at and beyond the end of the list."""
        name = "TVMGR_GetSearchedPrinterInfo"
        kind, index = _number(name, kind), _index(name, index)
        count = c_uint32()
        printer = self._read_record(lambda record: self._call(name, kind, index, byref(record), byref(count)))
        return printer if index < count.value else None

    def found_printers(self, kind: int) -> List[FoundPrinter]:
        """The results of the last search of this kind."""
        printers: List[FoundPrinter] = []
        while True:
            printer = self._read_found(kind, len(printers))
            if printer is None:
                return printers
            printers.append(printer)

    def search(self, kind: int, go_on: Optional[Callable[[float], bool]] = None) -> List[FoundPrinter]:
        """Searches for 3 s and returns what was found; up to 36 s more when printers that it asks have fallen silent.

        `go_on` is called about every 50 ms with the seconds since the start; it ends the search by returning False, or by
        raising, and then the names are still asked for. The next search and close() wait until 3 s after this one's start.
        """
        start = time.monotonic()
        self.start_search(kind)
        try:
            while self.is_searching():
                if go_on is not None and not go_on(time.monotonic() - start):
                    self.stop_search(kind)
                    break
                time.sleep(0.05)
        except BaseException:  # Ctrl-C among them
            self._library.TVMGR_StopSearchPrinter(kind)
            raise
        return self.found_printers(kind)

    # --- Kept for hosts that call them: fixed answers, as TaviraManager.h says. ---

    def clear_regist_list(self) -> None:
        self._call("TVMGR_ClearRegistList")

    def search_port(self) -> None:
        self._call("TVMGR_SearchPort", None, None, 0)

    def check_port(self) -> None:
        self._call("TVMGR_CheckPort", 0)

    def send_prn_file(self) -> None:
        self._call("TVMGR_SendPrnFile", None)

    def get_device_info(self) -> None:
        self._call("TVMGR_GetDeviceInfo", None, None, 0, 0)

    def set_callback_wnd(self, window: Optional[int]) -> None:
        self._call("TVMGR_SetCallbackWnd", window)
