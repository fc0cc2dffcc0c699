#!/usr/bin/env -S python3 -B
"""The Python binding over the built module and the stand-in port library, in real time.

Usage: python_test.py FOLDER_OF_THE_LIBRARIES TEST_CLASS   (SearchTest: through in_namespace.sh)
"""

import ctypes
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time
import unittest
from unittest import mock

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "bindings/python"))
import tavira  # noqa: E402
from tavira import Error, FileList, FoundPrinter, Manager, Operation, Request, Result, SearchKind, Setting, Status  # noqa: E402

LIBRARIES = pathlib.Path(sys.argv[1]).resolve()
MODULE = str(LIBRARIES / "libTaviraManager.so")
FOLDER = pathlib.Path(tempfile.mkdtemp(prefix="tavira_python_"))
os.environ["LXEMU_MEMORY"] = str(FOLDER)  # before the port library's first call

ALLOCATE = ctypes.CFUNCTYPE(ctypes.c_void_p, ctypes.c_void_p, ctypes.c_int32, ctypes.c_int32)


class TextCounter:
    """Counts the text buffers that the module's string manager makes and frees. A manager must be there."""

    def __init__(self, manager):
        self.allocated = self.freed = 0
        record = tavira._Record()
        manager._library.TVMGR_GetPrinterDeviceInfo(record)
        self._functions = ctypes.c_void_p.from_address(tavira._header(record.text1).manager)
        for text in tavira._TEXTS:
            tavira._release_text(getattr(record, text))
        self._real = self._functions.value
        slots = (ctypes.c_void_p * 5).from_address(self._real)
        allocate, free = ALLOCATE(slots[0]), tavira._FREE(slots[1])

        def count_allocated(*arguments):
            self.allocated += 1
            return allocate(*arguments)

        def count_freed(*arguments):
            self.freed += 1
            free(*arguments)

        self._keep = ALLOCATE(count_allocated), tavira._FREE(count_freed)
        self._counting = (ctypes.c_void_p * 5)(*slots)
        for i, function in enumerate(self._keep):
            self._counting[i] = ctypes.cast(function, ctypes.c_void_p).value

    def __enter__(self):
        self._functions.value = ctypes.addressof(self._counting)
        return self

    def __exit__(self, *_):
        self._functions.value = self._real


class HostTest(unittest.TestCase):
    def setUp(self):
        self.manager = Manager(MODULE)
        self.addCleanup(self.manager.close)

    def fails(self, code, call, *arguments):
        with self.assertRaises(Error) as caught:
            call(*arguments)
        self.assertEqual(code, caught.exception.code, caught.exception)
        return caught.exception


class ScenarioTest(HostTest):
    def tearDown(self):
        (FOLDER / "printer.ini").unlink(missing_ok=True)

    def test_loads_everything_one_setting_and_a_list(self):
        printer = self.manager
        printer.choose_port("USB001")
        self.assertEqual({}, printer.values())
        self.assertIs(Status.IDLE, printer.status())
        self.assertTrue(printer.has_default_prefix())
        printer.load()
        self.assertEqual(b"600", printer.value(Setting.CLR_Z))
        self.assertEqual(b"", printer.value(Setting.BACKGROUND))
        self.assertIsNone(printer.value(Setting.ST))
        self.assertEqual(77, len(printer.values()))  # all that can be read, and the background file
        (FOLDER / "printer.ini").write_text("[answers]\nCLM,S=4\nIMP,S=5\n")
        printer.load(Setting.CLM_S)
        self.assertEqual(b"4", printer.value(Setting.CLM_S))
        printer.load_these([Setting.CLR_Z, Setting.IMP_S])
        self.assertEqual(b"5", printer.value(Setting.IMP_S))

    def test_an_update_returns_only_when_the_printer_shows_the_value(self):
        printer = self.manager
        printer.choose_default()
        printer.load()
        printer.update_these({Setting.CMP_F: b"host"})
        self.assertEqual(b"host", printer.value(Setting.CMP_F))
        (FOLDER / "printer.ini").write_text("[printer]\nrefused = CMP,F\n")
        error = self.fails(Result.NOT_CONFIRMED, printer.update, Setting.CMP_F, "other", False)
        self.assertEqual("TVMGR_UpdatePrinterSettingNoChangeDPI: -82, "
                         "the printer took the command but still shows another state", str(error))
        self.assertEqual(b"host", printer.value(Setting.CMP_F))

    def test_files_are_stored_listed_fetched_and_deleted(self):
        printer = self.manager
        printer.choose_default()
        printer.register(Request.REGISTER_GRAPHIC, "~DYE:DOT,B,P,8,0,:B64:UE5HIGRhdGE=:")
        printer.register(Request.REGISTER_FORMAT, "^XA^DFE:LABEL.ZPL^FS", "^FO1,1^FDlabel^FS^XZ")
        printer.load()
        self.assertEqual(["DOT.PNG"], printer.files(FileList.PNG))
        self.assertEqual(["LABEL.ZPL"], printer.files(FileList.ZPL))
        self.assertEqual([], printer.files(FileList.GRF))
        self.assertEqual(b"PNG data", printer.fetch(FileList.PNG, "DOT.PNG"))
        self.assertIn(b"^FDlabel", printer.fetch(FileList.ZPL, "LABEL.ZPL"))
        self.assertIsNone(printer.fetch(FileList.PNG, "NONE.PNG", 1000))
        printer.delete(Request.DELETE_GRAPHIC, "DOT.PNG")
        self.assertEqual(0, printer.file_count(FileList.PNG))

    def test_a_restored_printer_shows_what_its_backup_holds(self):
        printer = self.manager
        printer.choose_default()
        printer.update(Setting.CMP_F, b"kept")
        printer.backup(FOLDER / "B\u00fcro \U0001f5a8.bak")
        printer.update(Setting.CMP_F, b"lost")
        printer.restore(FOLDER / "B\u00fcro \U0001f5a8.bak")
        self.assertEqual(b"kept", printer.value(Setting.CMP_F))
        none = tavira.BackupSections(*[False] * 7)
        self.fails(Result.BAD_ARGUMENT, printer.backup, FOLDER / "empty.bak", none, False)

    def test_a_text_keeps_its_characters_through_the_module(self):
        printer, port = self.manager, "B\u00fcro \u65e5 \U0001f5a8"
        printer.choose(FoundPrinter(SearchKind.NETWORK, address="192.0.2.7"), port)
        self.assertEqual(FoundPrinter(SearchKind.NETWORK, name=port, address="192.0.2.7"), printer.choice())

    def test_what_the_module_would_not_survive_or_would_mistake_is_an_error(self):
        printer = self.manager
        printer.choose_default()
        missing = str(FOLDER / "none.bak")
        for code, call, *arguments in (
            (Result.BAD_ARGUMENT, Manager, MODULE),
            (Result.BAD_ARGUMENT, printer.file_name, FileList.PNG, -1),
            (Result.BAD_ARGUMENT, printer.file_name, FileList.PNG, 0),
            (Result.BAD_ARGUMENT, printer.found, SearchKind.USB, -1),
            (Result.BAD_ARGUMENT, printer.found, SearchKind.USB, 0),
            (Result.BAD_ARGUMENT, printer.found, SearchKind.NETWORK, 2**32),
            (Result.BAD_ARGUMENT, printer.file_count, 35),
            (Result.BAD_ARGUMENT, printer.execute, Operation.SEND_DATA),
            (Result.BAD_ARGUMENT, printer.send, b""),
            (Result.BAD_ARGUMENT, printer.send, "\u00fc"),
            (Result.BAD_ARGUMENT, printer.fetch, FileList.PNG, "A.PNG", -1),
            (Result.BAD_ARGUMENT, printer.backup, missing + "\0x"),
            (Result.BAD_ARGUMENT, printer.restore, missing + "\0x"),
            (Result.BAD_ARGUMENT, printer.update_prefix, "!!", "^", ";"),
            (Result.BAD_ARGUMENT, printer.load, Setting.ST),
            (Result.BAD_ARGUMENT, printer.search_port),
            (Result.CHECK_PORT_UNSUPPORTED, printer.check_port),
            (Result.FILE_ERROR, printer.restore, missing),
        ):
            with self.subTest(call=call.__name__, arguments=arguments):
                self.fails(code, call, *arguments)
        for call, *arguments in ((printer.update, Setting.CLM_S, 3), (printer.update, Setting.CLM_S, None), (printer.send, 5),
                                 (printer.load, 7.5), (printer.value, "CLM_S"), (printer.fetch, FileList.PNG, None),
                                 (printer.backup, b"x.bak")):
            with self.subTest(call=call.__name__, arguments=arguments), self.assertRaises(TypeError):
                call(*arguments)
        with self.assertRaisesRegex(OSError, "none.bak"):
            Manager(FOLDER / "none.bak")
        printer.clear_regist_list()
        printer.send_prn_file()
        printer.get_device_info()
        printer.set_callback_wnd(None)
        printer.execute(Operation.NONE)
        printer.send("^XA^XZ")
        printer.update_prefix("!", "^", ";")
        self.assertFalse(printer.has_default_prefix())
        printer.update_prefix(b"~", b"^", b",")
        self.assertTrue(printer.has_default_prefix())
        printer.close()
        printer.close()
        self.fails(Result.NOT_INITIALIZED, printer.load)
        Manager(MODULE).choose_default()  # let go of
        Manager(MODULE).close()

    def test_a_code_of_the_port_library_is_passed_through(self):
        self.manager.choose_address("no address at all")
        error = self.fails(-1010, self.manager.status)
        self.assertEqual("a code of Ferrolink.dll, passed through", error.words)

    def test_a_thousand_records_leave_no_text_behind(self):
        self.manager.choose_port("USB001")
        with TextCounter(self.manager) as counter:
            for _ in range(1000):
                self.assertEqual("USB001", self.manager.choice().name)
            self.assertGreaterEqual(counter.allocated, 1000)
            self.assertEqual(counter.allocated, counter.freed)

    def test_without_the_port_library_there_is_no_manager(self):
        alone = shutil.copy(MODULE, FOLDER)
        code = ("import tavira\n"
                "for _ in range(2):\n"
                "    try: tavira.Manager()\n"
                "    except tavira.Error as error: print(error)\n")
        environment = dict(os.environ, TAVIRA_LIBRARY=str(alone), PYTHONPATH=os.path.dirname(tavira.__file__))
        run = subprocess.run([sys.executable, "-B", "-c", code], env=environment, capture_output=True, text=True)
        self.assertEqual(("TVMGR_Initialize: -5, Ferrolink.dll is missing or incomplete\n" * 2, ""), (run.stdout, run.stderr))


    def test_windows_shows_no_box_while_a_damaged_library_is_loaded(self):
        modes = [2]  # the host's own

        class Kernel32:
            GetThreadErrorMode = staticmethod(lambda: modes[-1])

            @staticmethod
            def SetThreadErrorMode(mode, earlier):
                if earlier is not None:
                    earlier._obj.value = modes[-1]
                modes.append(mode)
                return 1

        damaged = FOLDER / "TaviraManager.dll"
        damaged.write_text("MZ, and nothing that follows it")
        with mock.patch.object(sys, "platform", "win32"), \
             mock.patch.object(ctypes, "WinDLL", lambda name: Kernel32, create=True), self.assertRaises(OSError):
            tavira.Library(damaged)
        self.assertEqual([2, 3, 2] + [3, 2], modes)  # the port library, which is missing, and the module


class SearchTest(HostTest):
    """A real broadcast."""

    def setUp(self):
        self.assertEqual("1", os.environ.get("TAVIRA_TEST_NETWORK"), "run this through in_namespace.sh")
        super().setUp()

    def test_finds_the_printers_of_the_network_and_talks_to_one(self):
        times = []
        printers = self.manager.search(SearchKind.NETWORK, lambda seconds: times.append(seconds) or True)
        self.assertGreater(times[-1], 2.5)
        expected = [(SearchKind.NETWORK, "LX-R4100", "Dock 3" if address == "127.0.0.3" else address, address)
                    for address in ("127.0.0.2", "127.0.0.3", "127.0.0.4")]
        self.assertEqual(sorted(expected), sorted((p.kind, p.name, p.identification, p.address) for p in printers))
        with TextCounter(self.manager) as counter:
            for _ in range(334):
                self.assertEqual(printers, self.manager.found_printers(SearchKind.NETWORK))
            self.assertGreaterEqual(counter.allocated, 3 * 1002)  # two names and an address
            self.assertEqual(counter.allocated, counter.freed)
        self.manager.choose(next(printer for printer in printers if printer.identification == "Dock 3"))
        self.assertIs(Status.IDLE, self.manager.status())
        self.manager.load()
        self.assertEqual(b"300", self.manager.value(Setting.CLR_Z))

    def test_ends_when_it_is_told_to(self):
        start = time.monotonic()
        self.assertEqual(3, len(self.manager.search(SearchKind.NETWORK, lambda seconds: seconds < 0.5)))
        self.assertLess(time.monotonic() - start, 2.5)
        with self.assertRaises(ZeroDivisionError):
            self.manager.search(SearchKind.NETWORK, lambda seconds: 1 / 0)
        self.assertFalse(self.manager.is_searching())


if __name__ == "__main__":
    try:
        unittest.main(argv=[sys.argv[0], *sys.argv[2:]])
    finally:
        shutil.rmtree(FOLDER, ignore_errors=True)
