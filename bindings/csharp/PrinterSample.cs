// Reads settings, writes one and shows the verdict, backs up, searches.
//
//   PrinterSample read [PRINTER]
//   PrinterSample write NUMBER VALUE [PRINTER]    for example: write 12 front 192.0.2.7
//   PrinterSample backup FILE [PRINTER]
//   PrinterSample search
//
// PRINTER: an address of the network or a port of the print spooler ("USB001").
// Exit code: 0 done, 1 failed or not confirmed, 2 wrong usage.
using System;
using System.Collections.Generic;
using Tavira;

internal static class PrinterSample
{
    private static string Shown(Manager printer, Setting setting)
    {
        return printer.Text(setting) ?? "(not answered)";
    }

    // Chooses the printer and asks whether it is there, before anything waits for it.
    private static bool Connect(Manager printer, string name)
    {
        if (name == null)
        {
            printer.ChooseDefault();
        }
        else if (name.Contains("."))
        {
            printer.ChooseAddress(name);
        }
        else
        {
            printer.ChoosePort(name);
        }
        return printer.PrinterStatus() != Status.Unknown;
    }

    private static int Read(Manager printer)
    {
        printer.Load();
        Console.WriteLine("resolutions: {0}, {1}, {2}", Shown(printer, Setting.CLR_Z), Shown(printer, Setting.CLR_P),
            Shown(printer, Setting.CLR_R));
        foreach (string name in printer.Files(FileList.PNG))
        {
            Console.WriteLine("graphic: {0}", name);
        }
        return 0;
    }

    private static int Write(Manager printer, Setting setting, string value)
    {
        try
        {
            printer.Update(setting, value);
        }
        catch (TaviraException error) when (error.Code == (int)Result.NotConfirmed)
        {
            Console.WriteLine("not confirmed: sent {0}, the printer shows {1}", value, Shown(printer, setting));
            return 1;
        }
        Console.WriteLine("confirmed: the printer shows {0}", Shown(printer, setting));
        return 0;
    }

    private static int Backup(Manager printer, string path)
    {
        printer.Backup(path);
        Console.WriteLine("backed up");
        return 0;
    }

    private static int Search(Manager printer)
    {
        IReadOnlyList<FoundPrinter> printers = printer.Search(SearchKind.Network);
        foreach (FoundPrinter found in printers)
        {
            Console.WriteLine("{0}: {1}, {2}", found.Address, found.Name, found.Identification);
        }
        Console.WriteLine("printers: {0}", printers.Count);
        return 0;
    }

    private static int Usage()
    {
        Console.Error.WriteLine("usage: PrinterSample read|write NUMBER VALUE|backup FILE [PRINTER], or search");
        return 2;
    }

    private static int Run(string[] arguments)
    {
        var needed = new Dictionary<string, int> { { "read", 1 }, { "write", 3 }, { "backup", 2 }, { "search", 1 } };
        string command = arguments.Length > 0 ? arguments[0] : "";
        int number = 0;
        if (!needed.TryGetValue(command, out int count) || arguments.Length < count
            || arguments.Length > count + (command == "search" ? 0 : 1)
            || (command == "write" && !int.TryParse(arguments[1], out number)))
        {
            return Usage();
        }
        using (var printer = new Manager())
        {
            if (command == "search")
            {
                return Search(printer);
            }
            if (!Connect(printer, arguments.Length > count ? arguments[count] : null))
            {
                Console.Error.WriteLine("the printer does not answer");
                return 1;
            }
            return command == "read" ? Read(printer)
                : command == "backup" ? Backup(printer, arguments[1])
                : Write(printer, (Setting)number, arguments[2]);
        }
    }

    private static int Main(string[] arguments)
    {
        try
        {
            return Run(arguments);
        }
        catch (Exception error) when (error is TaviraException || error is DllNotFoundException
            || error is BadImageFormatException)
        {
            Console.Error.WriteLine(error.Message);
            return 1;
        }
    }
}
