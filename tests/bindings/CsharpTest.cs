// The C# binding over the built module and the stand-in port library, in real time.
//
// Usage: csharp_test.exe scenarios | search     (search: through in_namespace.sh)
// LXEMU_MEMORY names a folder of this test's own, which it empties: the run-time does not pass on what is set later.
using System;
using System.Collections.Generic;
using System.IO;
using System.Linq;
using System.Runtime.InteropServices;
using System.Text;
using Tavira;

internal static class CsharpTest
{
    private static readonly string Folder = Environment.GetEnvironmentVariable("LXEMU_MEMORY");
    private static int problems;

    private static void Equal<T>(T expected, T actual, string what)
    {
        if (!EqualityComparer<T>.Default.Equals(expected, actual))
        {
            ++problems;
            Console.WriteLine("{0}: {1}, expected {2}", what, actual, expected);
        }
    }

    private static void True(bool condition, string what)
    {
        Equal(true, condition, what);
    }

    private static TaviraException Fails(int code, string what, Action action)
    {
        try
        {
            action();
        }
        catch (TaviraException error)
        {
            Equal(code, error.Code, what);
            return error;
        }
        True(false, what + " fails");
        return new TaviraException("", 0);
    }

    private static void Ini(string text)
    {
        File.WriteAllText(Path.Combine(Folder, "printer.ini"), text);
    }

    private static string Names(IEnumerable<string> names)
    {
        return string.Join(" ", names);
    }

    private static void LoadsEverythingOneSettingAndAList(Manager printer)
    {
        printer.ChoosePort("USB001");
        Equal(0, printer.Values().Count(), "values before the first load");
        Equal(Status.Idle, printer.PrinterStatus(), "status");
        printer.Load();
        Equal("600", printer.Text(Setting.CLR_Z), "CLR_Z");
        Equal("", printer.Text(Setting.Background), "background");
        Equal(null, printer.Value(Setting.ST), "ST");
        Equal(77, printer.Values().Count(), "values"); // all that can be read, and the background file
        Ini("[answers]\nCLM,S=4\nIMP,S=5\n");
        printer.Load(Setting.CLM_S);
        Equal("4", printer.Text(Setting.CLM_S), "CLM_S");
        printer.LoadThese(new[] { Setting.CLR_Z, Setting.IMP_S });
        Equal("5", printer.Text(Setting.IMP_S), "IMP_S");
    }

    private static void AnUpdateReturnsOnlyWhenThePrinterShowsTheValue(Manager printer)
    {
        printer.ChooseDefault();
        printer.Load();
        printer.Update(Setting.CMP_F, "host");
        Equal("host", printer.Text(Setting.CMP_F), "CMP_F");
        Ini("[printer]\nrefused = CMP,F\n");
        TaviraException error = Fails(-82, "a refused value", () => printer.Update(Setting.CMP_F, "other", false));
        Equal("TVMGR_UpdatePrinterSettingNoChangeDPI: -82, the printer took the command but still shows another state",
            error.Message, "message");
        Equal("host", printer.Text(Setting.CMP_F), "CMP_F after the refusal");
    }

    private static void FilesAreStoredListedFetchedAndDeleted(Manager printer)
    {
        printer.ChooseDefault();
        printer.Register(Request.RegisterGraphic, "~DYE:DOT,B,P,8,0,:B64:UE5HIGRhdGE=:");
        printer.Register(Request.RegisterFormat, "^XA^DFE:LABEL.ZPL^FS", "^FO1,1^FDlabel^FS^XZ");
        printer.Load();
        Equal("DOT.PNG", Names(printer.Files(FileList.PNG)), "graphics");
        Equal("LABEL.ZPL", Names(printer.Files(FileList.ZPL)), "formats");
        Equal("", Names(printer.Files(FileList.GRF)), "other graphics");
        Equal("PNG data", Encoding.ASCII.GetString(printer.Fetch(FileList.PNG, "DOT.PNG")), "graphic");
        True(Encoding.ASCII.GetString(printer.Fetch(FileList.ZPL, "LABEL.ZPL")).Contains("^FDlabel"), "format");
        Equal(null, printer.Fetch(FileList.PNG, "NONE.PNG", 1000), "no file");
        printer.Delete(Request.DeleteGraphic, "DOT.PNG");
        Equal(0, printer.FileCount(FileList.PNG), "files after the deletion");
    }

    private static void ARestoredPrinterShowsWhatItsBackupHolds(Manager printer)
    {
        string path = Path.Combine(Folder, "B\u00fcro \ud83d\udda8.bak");
        printer.ChooseDefault();
        printer.Update(Setting.CMP_F, "kept");
        printer.Backup(path);
        True(File.Exists(path), "backup file");
        printer.Update(Setting.CMP_F, "lost");
        printer.Restore(path);
        Equal("kept", printer.Text(Setting.CMP_F), "CMP_F");
        var none = new BackupSections
        {
            Settings = false, SectionP = false, Graphics = false, Formats = false, Fonts = false, SectionC = false,
            Background = false
        };
        Fails(-7, "an empty backup", () => printer.Backup(path, none, false));
    }

    private static void ATextKeepsItsCharactersThroughTheModule(Manager printer)
    {
        const string port = "B\u00fcro \u65e5 \ud83d\udda8";
        printer.Choose(new FoundPrinter { Kind = SearchKind.Network, Address = "192.0.2.7" }, port);
        FoundPrinter choice = printer.Choice();
        Equal(port, choice.Name, "port name");
        Equal("192.0.2.7", choice.Address, "address");
        Equal(SearchKind.Network, choice.Kind, "kind");
    }

    private static void WhatTheModuleWouldNotSurviveOrWouldMistakeIsAnError(Manager printer)
    {
        string missing = Path.Combine(Folder, "none.bak");
        printer.ChooseDefault();
        Fails(-7, "a second manager", () => new Manager());
        Fails(-7, "a negative file index", () => printer.FileName(FileList.PNG, -1));
        Fails(-7, "a file index beyond the list", () => printer.FileName(FileList.PNG, 0));
        Fails(-7, "a negative printer index", () => printer.Found(SearchKind.Usb, -1));
        Fails(-7, "a printer index beyond the list", () => printer.Found(SearchKind.Usb, 0));
        Fails(-7, "no such list", () => printer.FileCount((FileList)35));
        Fails(-7, "data of an earlier call", () => printer.Execute(Operation.SendData));
        Fails(-7, "nothing to send", () => printer.Send(new byte[0]));
        Fails(-7, "a value that was not answered", () => printer.Update(Setting.CLM_S, printer.Text(Setting.ST)));
        Fails(-7, "not ASCII", () => printer.Send("\u00fc"));
        Fails(-7, "a cut backup path", () => printer.Backup(missing + "\0x"));
        Fails(-7, "a cut restore path", () => printer.Restore(missing + "\0x"));
        Fails(-7, "a setting that is written only", () => printer.Load(Setting.ST));
        Fails(-7, "SearchPort", printer.SearchPort);
        Fails(-103, "CheckPort", printer.CheckPort);
        Fails(-63, "a missing file", () => printer.Restore(missing));
        printer.ClearRegistList();
        printer.SendPrnFile();
        printer.GetDeviceInfo();
        printer.SetCallbackWnd(IntPtr.Zero);
        printer.Execute(Operation.None);
        printer.Send("^XA^XZ");
        printer.UpdatePrefix('!', '^', ';');
        True(!printer.HasDefaultPrefix(), "other prefix");
        printer.UpdatePrefix('~', '^', ',');
        True(printer.HasDefaultPrefix(), "default prefix");
        printer.ChooseAddress("no address at all");
        Equal("a code of Ferrolink.dll, passed through", Fails(-1010, "address", () => printer.PrinterStatus()).Words, "words");
        printer.Dispose();
        printer.Dispose();
        Fails(-2, "after the end", printer.Load);
    }

    private static void AThousandRecordsLeaveNoTextBehind(Manager printer)
    {
        printer.ChoosePort("USB001");
        using (var counter = new TextCounter())
        {
            for (int i = 0; i < 1000; ++i)
            {
                Equal("USB001", printer.Choice().Name, "port name");
            }
            True(counter.Allocated >= 1000, counter.Allocated + " texts");
            Equal(counter.Allocated, counter.Freed, "freed");
        }
    }

    private static void ASearchFindsThePrintersOfTheNetwork(Manager printer)
    {
        TimeSpan last = TimeSpan.Zero;
        IReadOnlyList<FoundPrinter> found = printer.Search(SearchKind.Network, elapsed => (last = elapsed) >= TimeSpan.Zero);
        True(last > TimeSpan.FromSeconds(2.5), "the search ended after " + last);
        Func<IEnumerable<FoundPrinter>, string> names = list => string.Join(" ",
            list.Select(p => p.Kind + "/" + p.Name + "/" + p.Identification + "/" + p.Address).OrderBy(p => p, StringComparer.Ordinal));
        string expected = "Network/LX-R4100/127.0.0.2/127.0.0.2 Network/LX-R4100/127.0.0.4/127.0.0.4 "
            + "Network/LX-R4100/Dock 3/127.0.0.3";
        Equal(expected, names(found), "printers");
        using (var counter = new TextCounter())
        {
            for (int i = 0; i < 334; ++i)
            {
                Equal(expected, names(printer.FoundPrinters(SearchKind.Network)), "printers again");
            }
            True(counter.Allocated >= 3 * 1002, counter.Allocated + " texts"); // two names and an address
            Equal(counter.Allocated, counter.Freed, "freed");
        }
        printer.Choose(found.Single(p => p.Identification == "Dock 3"));
        Equal(Status.Idle, printer.PrinterStatus(), "status");
        printer.Load();
        Equal("300", printer.Text(Setting.CLR_Z), "CLR_Z");
    }

    private static void ASearchEndsWhenItIsToldTo(Manager printer)
    {
        DateTime start = DateTime.UtcNow;
        Equal(3, printer.Search(SearchKind.Network, elapsed => elapsed.TotalSeconds < 0.5).Count, "printers");
        True((DateTime.UtcNow - start).TotalSeconds < 2.5, "a short search");
        try
        {
            printer.Search(SearchKind.Network, elapsed => throw new OperationCanceledException());
            True(false, "a search is cancelled");
        }
        catch (OperationCanceledException)
        {
            True(!printer.IsSearching(), "no search runs");
        }
    }

    private static int Main(string[] arguments)
    {
        bool searches = arguments.Single() == "search";
        if (searches && Environment.GetEnvironmentVariable("TAVIRA_TEST_NETWORK") != "1")
        {
            Console.WriteLine("run this through in_namespace.sh");
            return 1;
        }
        if (Directory.Exists(Folder))
        {
            Directory.Delete(Folder, true);
        }
        Directory.CreateDirectory(Folder);
        var tests = searches
            ? new Action<Manager>[] { ASearchFindsThePrintersOfTheNetwork, ASearchEndsWhenItIsToldTo }
            : new Action<Manager>[]
            {
                LoadsEverythingOneSettingAndAList, AnUpdateReturnsOnlyWhenThePrinterShowsTheValue,
                FilesAreStoredListedFetchedAndDeleted, ARestoredPrinterShowsWhatItsBackupHolds,
                ATextKeepsItsCharactersThroughTheModule, WhatTheModuleWouldNotSurviveOrWouldMistakeIsAnError,
                AThousandRecordsLeaveNoTextBehind
            };
        foreach (Action<Manager> test in tests)
        {
            Console.WriteLine(test.Method.Name);
            using (var printer = new Manager())
            {
                test(printer);
            }
            File.Delete(Path.Combine(Folder, "printer.ini"));
        }
        Console.WriteLine("{0} tests, {1} problems", tests.Length, problems);
        return problems == 0 ? 0 : 1;
    }
}

/// <summary>Counts the text buffers that the module's string manager makes and frees. A manager must be there.</summary>
internal sealed class TextCounter : IDisposable
{
    private readonly IntPtr manager;
    private readonly IntPtr real;
    private readonly IntPtr counting = Marshal.AllocHGlobal(5 * IntPtr.Size);
    private readonly Allocate countAllocated;
    private readonly NativeMethods.FreeText countFreed;

    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    private delegate IntPtr Allocate(IntPtr manager, int chars, int charSize);

    public TextCounter()
    {
        var record = new NativeMethods.Record();
        NativeMethods.TVMGR_GetPrinterDeviceInfo(ref record);
        manager = Marshal.ReadIntPtr(record.Text1, -24);
        record.Release();
        real = Marshal.ReadIntPtr(manager);
        var allocate = (Allocate)Marshal.GetDelegateForFunctionPointer(Marshal.ReadIntPtr(real), typeof(Allocate));
        var free = (NativeMethods.FreeText)Marshal.GetDelegateForFunctionPointer(
            Marshal.ReadIntPtr(real, IntPtr.Size), typeof(NativeMethods.FreeText));
        countAllocated = (owner, chars, charSize) =>
        {
            ++Allocated;
            return allocate(owner, chars, charSize);
        };
        countFreed = (owner, data) =>
        {
            ++Freed;
            free(owner, data);
        };
        for (int slot = 2; slot < 5; ++slot)
        {
            Marshal.WriteIntPtr(counting, slot * IntPtr.Size, Marshal.ReadIntPtr(real, slot * IntPtr.Size));
        }
        Marshal.WriteIntPtr(counting, Marshal.GetFunctionPointerForDelegate(countAllocated));
        Marshal.WriteIntPtr(counting, IntPtr.Size, Marshal.GetFunctionPointerForDelegate(countFreed));
        Marshal.WriteIntPtr(manager, counting);
    }

    public int Allocated { get; private set; }

    public int Freed { get; private set; }

    public void Dispose()
    {
        Marshal.WriteIntPtr(manager, real);
        Marshal.FreeHGlobal(counting);
        GC.KeepAlive(countAllocated);
        GC.KeepAlive(countFreed);
    }
}
