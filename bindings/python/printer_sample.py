#!/usr/bin/env python3
"""Reads settings, writes one and shows the verdict, backs up, searches.

  printer_sample.py read [PRINTER]
  printer_sample.py write NUMBER VALUE [PRINTER]    for example: write 12 front 192.0.2.7
  printer_sample.py backup FILE [PRINTER]
  printer_sample.py search

PRINTER: an address of the network or a port of the print spooler ("USB001").
Exit code: 0 done, 1 failed or not confirmed, 2 wrong usage.
"""

import sys

import tavira
from tavira import FileList, Manager, SearchKind, Setting


def shown(printer, setting):
    value = printer.value(setting)
    return "(not answered)" if value is None else value.decode("latin-1")


def connect(printer, name):
    """Chooses the printer and asks whether it is there, before anything waits for it."""
    if not name:
        printer.choose_default()
    elif "." in name:
        printer.choose_address(name)
    else:
        printer.choose_port(name)
    if printer.status() == tavira.Status.UNKNOWN:
        sys.exit("the printer does not answer")


def read(printer):
    printer.load()
    print("resolutions:", ", ".join(shown(printer, key) for key in (Setting.CLR_Z, Setting.CLR_P, Setting.CLR_R)))
    for name in printer.files(FileList.PNG):
        print("graphic:", name)


def write(printer, number, value):
    setting = int(number)
    try:
        printer.update(setting, value)
    except tavira.Error as error:
        if error.code != tavira.Result.NOT_CONFIRMED:
            raise
        print(f"not confirmed: sent {value}, the printer shows {shown(printer, setting)}")
        sys.exit(1)
    print("confirmed: the printer shows", shown(printer, setting))


def backup(printer, path):
    printer.backup(path)
    print("backed up")


def search(printer):
    printers = printer.search(SearchKind.NETWORK)
    for found in printers:
        print(f"{found.address}: {found.name}, {found.identification}")
    print("printers:", len(printers))


def main(arguments):
    commands = {"read": (read, 0), "write": (write, 2), "backup": (backup, 1), "search": (search, 0)}
    command, needed = commands.get(arguments[0] if arguments else "", (None, 0))
    names = arguments[1 + needed:]
    if (command is None or len(arguments) < 1 + needed or len(names) > (0 if command is search else 1)
            or (command is write and not arguments[1].isdecimal())):
        print(__doc__, file=sys.stderr)
        sys.exit(2)
    try:
        with Manager() as printer:
            if command is not search:
                connect(printer, names[0] if names else "")
            command(printer, *arguments[1:1 + needed])
    except (tavira.Error, OSError) as error:  # OSError: the module cannot be loaded
        sys.exit(str(error))


if __name__ == "__main__":
    main(sys.argv[1:])
