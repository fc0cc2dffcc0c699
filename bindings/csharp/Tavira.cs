// TaviraManager for C# 7: the functions of TaviraManager.h as one object. One file for netstandard 2.0 and .NET
// Framework 4.x; it needs TaviraManager.dll (64 bits) and nothing else.
//
//     using (var printer = new Manager())
//     {
//         printer.ChoosePort("USB001");
//         printer.Load();
//         Console.WriteLine(printer.Text(Setting.CLR_Z));
//     }
//
// What the functions do, how long they block and what their codes mean stands in TaviraManager.h, whose conventions hold
// here too. This file says only what is different:
//
// - A TaviraException is thrown for every result but Result.OK. It carries the code, its words and the function.
//   (DllNotFoundException: the module itself cannot be loaded. BadImageFormatException: the process has 32 bits.)
// - Values and answers that may be missing are null, which is also what a silent printer looks like.
// - What would end the process (a negative index, a buffer that is too small, the bytes of an empty value) and what would
//   be cut short (a zero character inside a text) is a TaviraException, and nothing is called.
//
// One thread, one Manager at a time: use Task.Run or a thread of your own to keep a window alive, and stay on it. Only a
// printer search can be ended early; every other call runs to its end.
using System;
using System.Collections.Generic;
using System.Diagnostics;
using System.IO;
using System.Runtime.InteropServices;
using System.Threading;

namespace Tavira
{
    /// <summary>Result codes. Any other value comes from Ferrolink.dll.</summary>
    public enum Result
    {
        OK = 0,
        FileTooLarge = 4,
        PortNotReady = -1,
        NotInitialized = -2,
        OutOfMemory = -3,
        PortLibraryMissing = -5,
        BadArgument = -7,
        SearchFailed = -9,
        PayloadUnreadable = -10,
        FileError = -63,
        FileReadError = -65,
        NotConfirmed = -82,
        CheckPortUnsupported = -103,
    }

    /// <summary>Settings, named after the printer's own keys; ST is written only, Background is read only.</summary>
    public enum Setting
    {
        IMP_S = 1,
        IMF_V = 2,
        CLR_Z = 3,
        CLR_P = 4,
        CLR_R = 5,
        CLM_P = 6,
        CLM_S = 7,
        CLM_D = 8,
        CLM_T = 9,
        CLP_M = 10,
        CMP_S = 11,
        CMP_F = 12,
        CLM_F = 13,
        CLS_P = 14,
        CLS_L = 15,
        CLS_G = 16,
        CLW_T = 17,
        CLW_B = 18,
        CLW_R = 19,
        CLW_L = 20,
        CPC_E = 21,
        CLE_T = 22,
        CLE_M = 23,
        CLP_O = 24,
        CPC_C = 25,
        CPC_D = 26,
        CPC_P = 27,
        CPC_B = 28,
        CBW_C = 29,
        CFE_T = 35,
        CLB_I = 36,
        Background = 37,
        CMT_S = 38,
        CMT_T = 39,
        CMF_P = 40,
        CMF_H = 41,
        CMP_M = 42,
        CUB_Z = 43,
        CSL_N = 44,
        CWR_P = 45,
        ST = 46,
        CUI_B = 47,
        CUI_F = 48,
        CUI_C = 49,
        CUL_B = 50,
        CUL_C = 51,
        CUL_L = 52,
        CMV_S = 53,
        CMV_C = 54,
        CMV_I = 55,
        CMN_S = 56,
        CMV_O = 57,
        CMU_A = 58,
        CMU_B = 59,
        CMU_C = 60,
        CMU_D = 61,
        CMU_E = 62,
        CMU_F = 63,
        CMU_G = 64,
        CCC_T = 65,
        CCC_C = 66,
        CCC_D = 67,
        SCM_1 = 68,
        SCM_2 = 69,
        SCM_O = 70,
        SCM_C = 71,
        SCN_L = 72,
        SCN_C = 73,
        CPC_Y = 74,
        CBB_M = 76,
        CLA_C = 77,
        CFA_W = 78,
        INU_S = 79,
        INU_N = 80,
        INU_U = 81,
        INU_P = 82,
        INU_V = 83,
        CMP_U = 84,
    }

    /// <summary>Lists of the files that the printer stores.</summary>
    public enum FileList
    {
        PNG = 30,
        TTF = 31,
        TTE = 32,
        FMT = 33,
        CNV = 34,
        Background = 36,
        ZPL = 75,
        GRF = 85,
    }

    /// <summary>Operations of Manager.Execute.</summary>
    public enum Operation
    {
        None = 0x1001000,
        HeadMaintenance = 0x1001001,
        HeadCheck = 0x1001002,
        MediaCalibration = 0x1001003,
        FactoryReset = 0x1001004,
        InitializeMemory = 0x1001005,
        SendData = 0x1001006,
        PrintConfiguration = 0x1001007,
        WipeFonts = 0x1001008,
        WipeBarcodes = 0x1001009,
        WipeGraphics = 0x100100A,
        WipeFormats = 0x100100B,
        ResetPrefix = 0x100100C,
    }

    /// <summary>Kinds of Manager.Register and Manager.Delete.</summary>
    public enum Request
    {
        RegisterGraphic = 0x1001000,
        RegisterFormat = 0x1001001,
        RegisterFont = 0x1001003,
        DeleteGraphic = 0x1001004,
        DeleteFormat = 0x1001005,
        DeleteFont = 0x1001007,
        Background = 0x1001008,
    }

    /// <summary>Printer states. Unknown: the printer does not answer.</summary>
    public enum Status
    {
        Unknown = 0,
        Idle = 1,
        Busy = 2,
        Other = 3,
    }

    /// <summary>Kinds of printer search.</summary>
    public enum SearchKind
    {
        Usb = 0,
        Network = 1,
    }

    /// <summary>A function that did not answer OK, or that was not called because its arguments are wrong.</summary>
    public sealed class TaviraException : Exception
    {
        public TaviraException(string function, int code) : this(function, code, WordsOf(code))
        {
        }

        public TaviraException(string function, int code, string words) : base(function + ": " + code + ", " + words)
        {
            Function = function;
            Code = code;
            Words = words;
        }

        public string Function { get; }

        /// <summary>A value of Result, or Ferrolink.dll's own code.</summary>
        public int Code { get; }

        public string Words { get; }

        /// <summary>What a result code means. A code of the port library has one text for all.</summary>
        public static string WordsOf(int code)
        {
            switch ((Result)code)
            {
                case Result.OK:
                    return "done";
                case Result.FileTooLarge:
                    return "the backup file has grown past 1 GiB; it was closed properly before that";
                case Result.PortNotReady:
                    return "Ferrolink.dll is missing or incomplete, or the search could not start its worker";
                case Result.NotInitialized:
                    return "there is no manager, or it has no port library";
                case Result.OutOfMemory:
                    return "memory ran out";
                case Result.PortLibraryMissing:
                    return "Ferrolink.dll is missing or incomplete";
                case Result.BadArgument:
                    return "a bad argument, nothing to send, or an operation that does not exist";
                case Result.SearchFailed:
                    return "the network search could not open its socket or send its broadcast";
                case Result.PayloadUnreadable:
                    return "the stored file came back in a form that cannot be decoded";
                case Result.FileError:
                    return "the file on this computer cannot be created, opened or written";
                case Result.FileReadError:
                    return "the file on this computer cannot be read whole";
                case Result.NotConfirmed:
                    return "the printer took the command but still shows another state";
                case Result.CheckPortUnsupported:
                    return "port checks are not supported";
                default:
                    return "a code of Ferrolink.dll, passed through";
            }
        }
    }

    /// <summary>One printer: of a search, or to be chosen. Empty members say nothing.</summary>
    public sealed class FoundPrinter
    {
        public SearchKind Kind { get; set; }

        /// <summary>USB: model. Network: first name. Of Manager.Choice: the port name.</summary>
        public string Name { get; set; } = "";

        /// <summary>USB: IEEE 1284 device ID. Network: second name.</summary>
        public string Identification { get; set; } = "";

        /// <summary>USB.</summary>
        public string DevicePath { get; set; } = "";

        /// <summary>USB; 0 when not read.</summary>
        public int VendorId { get; set; }

        /// <summary>USB; 0 when not read.</summary>
        public int ProductId { get; set; }

        /// <summary>USB.</summary>
        public string ProductName { get; set; } = "";

        /// <summary>Network.</summary>
        public string Address { get; set; } = "";
    }

    /// <summary>What a backup is to hold. Sections P and C are named in its header only.</summary>
    public sealed class BackupSections
    {
        public bool Settings { get; set; } = true;
        public bool SectionP { get; set; } = true;
        public bool Graphics { get; set; } = true;
        public bool Formats { get; set; } = true;
        public bool Fonts { get; set; } = true;
        public bool SectionC { get; set; } = true;
        public bool Background { get; set; } = true;
    }

    /// <summary>The module's one manager, from construction to Dispose.</summary>
    public sealed class Manager : IDisposable
    {
        /// <summary>The version of the module that this file belongs to.</summary>
        public const string Version = "1.0.0";

        private bool isOpen;

        /// <summary>Throws also when there is a manager already, made by whomever: a second one would leak the first.
        /// </summary>
        public Manager()
        {
            NativeMethods.LoadFromFolder(LibraryFolder);
            const string function = "TVMGR_Initialize";
            if (NativeMethods.TVMGR_GetSearchPrinterStatus() != (int)Result.NotInitialized)
            {
                throw new TaviraException(function, (int)Result.BadArgument, "there is a manager already");
            }
            int result = NativeMethods.TVMGR_Initialize();
            if (result != (int)Result.OK)
            {
                NativeMethods.TVMGR_Terminate(); // a failed start may leave a manager in place
                throw new TaviraException(function, result);
            }
            isOpen = true;
        }

        /// <summary>Windows: where TaviraManager.dll and Ferrolink.dll are. The program's folder unless set before the
        /// first Manager.</summary>
        public static string LibraryFolder { get; set; } = AppDomain.CurrentDomain.BaseDirectory;

        /// <summary>Waits for the worker of the last search: until 3 s after its start, also when it was stopped before.
        /// Printers that are being asked for their names are given up. May be called twice.</summary>
        public void Dispose()
        {
            if (isOpen)
            {
                isOpen = false;
                NativeMethods.TVMGR_Terminate();
            }
        }

        // --- Choosing the printer. One Manager for each printer: see convention 10 of TaviraManager.h. ---

        /// <summary>By device path or address. Without a port name, that of a printer port installed for it is taken.
        /// </summary>
        public void Choose(FoundPrinter printer, string portName = null)
        {
            const string function = "TVMGR_UpdatePortComInfo";
            RequireManager(function);
            if (printer == null)
            {
                throw new ArgumentNullException(nameof(printer));
            }
            CheckText(function, portName);
            string[] texts =
            {
                printer.Name, printer.Identification, printer.DevicePath, printer.ProductName, printer.Address
            };
            var buffers = new IntPtr[texts.Length];
            try
            {
                for (int i = 0; i < texts.Length; ++i)
                {
                    CheckText(function, texts[i]);
                    buffers[i] = Marshal.StringToHGlobalUni(texts[i]);
                }
                var record = new NativeMethods.Record
                {
                    Kind = (int)printer.Kind, Text1 = buffers[0], Text2 = buffers[1], Text3 = buffers[2],
                    Value1 = printer.VendorId, Value2 = printer.ProductId, Text4 = buffers[3], Text5 = buffers[4]
                };
                string port = string.IsNullOrEmpty(portName) ? null : portName;
                Check(function, NativeMethods.TVMGR_UpdatePortComInfo(ref record, port));
            }
            finally
            {
                foreach (IntPtr buffer in buffers)
                {
                    Marshal.FreeHGlobal(buffer);
                }
            }
        }

        public void ChooseAddress(string address)
        {
            Choose(new FoundPrinter { Kind = SearchKind.Network, Address = address });
        }

        /// <summary>A port of the print spooler, such as "USB001".</summary>
        public void ChoosePort(string portName)
        {
            const string function = "TVMGR_UpdatePortComInfo";
            RequireManager(function);
            CheckText(function, portName);
            Check(function, NativeMethods.TVMGR_UpdatePortComInfo(IntPtr.Zero, portName));
        }

        /// <summary>Ferrolink.dll gets empty texts and takes what it takes by default.</summary>
        public void ChooseDefault()
        {
            ChoosePort(null);
        }

        public FoundPrinter Choice()
        {
            const string function = "TVMGR_GetPrinterDeviceInfo";
            RequireManager(function);
            var record = new NativeMethods.Record();
            try
            {
                Check(function, NativeMethods.TVMGR_GetPrinterDeviceInfo(ref record));
                return record.Read();
            }
            finally
            {
                record.Release();
            }
        }

        // --- Settings ---

        /// <summary>Reads everything: settings, file lists, background file. A silent printer is no error.</summary>
        public void Load()
        {
            Call("TVMGR_LoadSetting", () => NativeMethods.TVMGR_LoadSetting(true, 0));
        }

        /// <summary>Refreshes one setting that Load() has stored before.</summary>
        public void Load(Setting setting)
        {
            Call("TVMGR_LoadSetting", () => NativeMethods.TVMGR_LoadSetting(false, (int)setting));
        }

        /// <summary>Refreshes these in one transaction. Replaces the load list.</summary>
        public void LoadThese(IEnumerable<Setting> settings, bool guardResolution = true)
        {
            Call("TVMGR_ClearLoadList", NativeMethods.TVMGR_ClearLoadList);
            foreach (Setting setting in settings)
            {
                Call("TVMGR_SetLoadList", () => NativeMethods.TVMGR_SetLoadList((uint)setting));
            }
            Call("TVMGR_LoadSettingByList", () => NativeMethods.TVMGR_LoadSettingByList(guardResolution));
        }

        /// <summary>The bytes that the printer reported when it was last loaded; null when it reported nothing.</summary>
        public byte[] Value(Setting setting)
        {
            RequireManager("TVMGR_GetSettingValue");
            int length = 0;
            if (!NativeMethods.TVMGR_GetSettingValue((int)setting, null, ref length))
            {
                return null;
            }
            var value = new byte[Math.Max(length, 0)];
            // The bytes of an empty value must not be asked for.
            bool isRead = value.Length == 0 || NativeMethods.TVMGR_GetSettingValue((int)setting, value, ref length);
            return isRead ? value : null;
        }

        /// <summary>Value as text, a character for each byte; null when the printer reported nothing.</summary>
        public string Text(Setting setting)
        {
            byte[] value = Value(setting);
            return value == null ? null : new string(Array.ConvertAll(value, b => (char)b));
        }

        /// <summary>All that are stored, in the order of their numbers.</summary>
        public IEnumerable<KeyValuePair<Setting, byte[]>> Values()
        {
            foreach (Setting setting in (Setting[])Enum.GetValues(typeof(Setting)))
            {
                byte[] value = Value(setting);
                if (value != null)
                {
                    yield return new KeyValuePair<Setting, byte[]>(setting, value);
                }
            }
        }

        public void Update(Setting setting, string value, bool guardResolution = true)
        {
            Update(setting, Ascii("TVMGR_SetUpdateList", value), guardResolution);
        }

        /// <summary>UpdateThese with one setting.</summary>
        public void Update(Setting setting, byte[] value, bool guardResolution = true)
        {
            UpdateThese(new[] { new KeyValuePair<Setting, byte[]>(setting, value) }, guardResolution);
        }

        /// <summary>Writes, saves, and reads back: returns only when the printer shows every value (some are not
        /// compared: see TVMGR_UpdatePrinterSetting). Replaces the update list.</summary>
        /// <exception cref="TaviraException">Among others, Result.NotConfirmed: it was sent, but the printer shows
        /// another value.</exception>
        public void UpdateThese(IEnumerable<KeyValuePair<Setting, byte[]>> changes, bool guardResolution = true)
        {
            Call("TVMGR_ClearUpdateList", NativeMethods.TVMGR_ClearUpdateList);
            foreach (KeyValuePair<Setting, byte[]> change in changes)
            {
                if (change.Value == null) // what Value returns for "not answered": not to be written as an empty one
                {
                    throw new TaviraException("TVMGR_SetUpdateList", (int)Result.BadArgument, "no value for " + change.Key);
                }
                Call("TVMGR_SetUpdateList",
                    () => NativeMethods.TVMGR_SetUpdateList((uint)change.Key, change.Value, Length(change.Value)));
            }
            if (guardResolution)
            {
                Call("TVMGR_UpdatePrinterSetting", NativeMethods.TVMGR_UpdatePrinterSetting);
            }
            else
            {
                Call("TVMGR_UpdatePrinterSettingNoChangeDPI", NativeMethods.TVMGR_UpdatePrinterSettingNoChangeDPI);
            }
        }

        /// <summary>Three ASCII characters.</summary>
        public void UpdatePrefix(char control, char format, char delimiter)
        {
            byte[] bytes = Ascii("TVMGR_UpdatePrefix", new string(new[] { control, format, delimiter }));
            Call("TVMGR_UpdatePrefix", () => NativeMethods.TVMGR_UpdatePrefix(bytes[0], bytes[1], bytes[2]));
        }

        /// <summary>True also for a silent printer.</summary>
        public bool HasDefaultPrefix()
        {
            byte isDefault = 0;
            Call("TVMGR_IsDefaultPrefix", () => NativeMethods.TVMGR_IsDefaultPrefix(out isDefault));
            return isDefault != 0;
        }

        // --- Status, commands, operations ---

        /// <summary>Status.Unknown: the printer does not answer.</summary>
        public Status PrinterStatus()
        {
            uint status = 0;
            Call("TVMGR_GetPrinterStatus", () => NativeMethods.TVMGR_GetPrinterStatus(ref status));
            return (Status)status;
        }

        public void Send(string command, bool allowResolutionChange = false)
        {
            Send(Ascii("TVMGR_DirectSendCommand", command), allowResolutionChange);
        }

        public void Send(byte[] command, bool allowResolutionChange = false)
        {
            Call("TVMGR_DirectSendCommand",
                () => NativeMethods.TVMGR_DirectSendCommand(command, Length(command), allowResolutionChange));
        }

        /// <summary>Waits until the printer is no longer busy, up to 60 s after the command (head maintenance 300 s), and
        /// longer for a silent one: see TVMGR_ExecutePrinterOperation. data: for Operation.SendData.</summary>
        public void Execute(Operation operation, byte[] data = null)
        {
            const string function = "TVMGR_SetExecuteList";
            if (operation == Operation.SendData && Length(data) == 0)
            {
                // The module would send the data of an earlier call.
                throw new TaviraException(function, (int)Result.BadArgument);
            }
            Call(function, () => NativeMethods.TVMGR_SetExecuteList((uint)operation, data, Length(data)));
            Call("TVMGR_ExecutePrinterOperation", NativeMethods.TVMGR_ExecutePrinterOperation);
        }

        // --- Stored files ---

        public int FileCount(FileList list)
        {
            uint count = 0;
            Call("TVMGR_GetRegistFileArraySize",
                () => NativeMethods.TVMGR_GetRegistFileArraySize((int)list, ref count));
            return checked((int)count);
        }

        public string FileName(FileList list, int index)
        {
            const string function = "TVMGR_GetRegistFileArrayData";
            CheckIndex(function, index);
            uint length = 0;
            Call(function, () => NativeMethods.TVMGR_GetRegistFileArrayData((int)list, index, null, ref length));
            ++length; // for the terminator
            var name = new char[length];
            Call(function, () => NativeMethods.TVMGR_GetRegistFileArrayData((int)list, index, name, ref length));
            return new string(name, 0, name.Length - 1);
        }

        /// <summary>The names that the last full load, registration, deletion or operation found; entries without one
        /// are left out.</summary>
        public IReadOnlyList<string> Files(FileList list)
        {
            var names = new string[FileCount(list)];
            for (int i = 0; i < names.Length; ++i)
            {
                names[i] = FileName(list, i);
            }
            return Array.FindAll(names, name => name.Length != 0);
        }

        /// <summary>A stored file, or null: there is no such file, or the printer was silent. What the printer sends
        /// compressed (":Z64:") stays so.</summary>
        public byte[] Fetch(FileList list, string name, uint timeoutMs = 60000)
        {
            CheckText("TVMGR_LoadStoredData", name);
            byte mode = list == FileList.FMT || list == FileList.ZPL ? (byte)1 : (byte)0;
            Call("TVMGR_LoadStoredData", () => NativeMethods.TVMGR_LoadStoredData(name, mode, timeoutMs));
            uint length = 0;
            Call("TVMGR_GetStoredData", () => NativeMethods.TVMGR_GetStoredData(null, ref length));
            if (length == 0)
            {
                return null;
            }
            var data = new byte[length];
            Call("TVMGR_GetStoredData", () => NativeMethods.TVMGR_GetStoredData(data, ref length));
            return data;
        }

        public void Register(Request request, string command, string secondary = null)
        {
            const string function = "TVMGR_UpdateRegistList";
            Register(request, Ascii(function, command), Ascii(function, secondary));
        }

        /// <summary>Stores a file, given as the printer's own download command, and proves it (but a format) by listing
        /// the files.</summary>
        public void Register(Request request, byte[] command, byte[] secondary = null)
        {
            SetRequest(request, command, secondary);
            Call("TVMGR_RegistData", NativeMethods.TVMGR_RegistData);
        }

        /// <summary>Deletes a stored file and proves it (but the background file) by listing the files; a silent printer
        /// lists none.</summary>
        public void Delete(Request request, string name)
        {
            SetRequest(request, Ascii("TVMGR_UpdateRegistList", name), null);
            Call("TVMGR_DeleteData", NativeMethods.TVMGR_DeleteData);
        }

        // --- Backup and restore ---

        public void Backup(string path, BackupSections sections = null, bool reload = true)
        {
            const string function = "TVMGR_UpdateBackupInfo";
            RequireManager(function);
            CheckText(function, path);
            sections = sections ?? new BackupSections();
            var info = new NativeMethods.BackupInfo
            {
                Path = Marshal.StringToHGlobalUni(path), Settings = Flag(sections.Settings),
                SectionP = Flag(sections.SectionP), SectionI = Flag(sections.Graphics),
                SectionT = Flag(sections.Formats), SectionF = Flag(sections.Fonts),
                SectionC = Flag(sections.SectionC), SectionB = Flag(sections.Background)
            };
            try
            {
                Check(function, NativeMethods.TVMGR_UpdateBackupInfo(ref info));
            }
            finally
            {
                Marshal.FreeHGlobal(info.Path);
            }
            Call("TVMGR_Backup", () => NativeMethods.TVMGR_Backup(Flag(reload)));
        }

        /// <summary>Sends a backup file. That the printer took it shows in the values, or in a second backup.</summary>
        public void Restore(string path)
        {
            CheckText("TVMGR_Restore", path);
            Call("TVMGR_Restore", () => NativeMethods.TVMGR_Restore(path));
        }

        // --- Finding printers ---

        /// <summary>Starts a search, which ends after 3 s, or up to 36 s later when printers that it asks for their names
        /// have fallen silent. Waits for the worker of an earlier one as long. After an exception none runs.</summary>
        public void StartSearch(SearchKind kind)
        {
            const string function = "TVMGR_StartSearchPrinter";
            RequireManager(function);
            int result = NativeMethods.TVMGR_StartSearchPrinter((uint)kind, 0);
            if (result != (int)Result.OK)
            {
                NativeMethods.TVMGR_StopSearchPrinter((uint)kind);
                throw new TaviraException(function, result);
            }
        }

        /// <summary>Ends a search before its time. Another thread may call it.</summary>
        public void StopSearch(SearchKind kind)
        {
            Call("TVMGR_StopSearchPrinter", () => NativeMethods.TVMGR_StopSearchPrinter((uint)kind));
        }

        public bool IsSearching()
        {
            const string function = "TVMGR_GetSearchPrinterStatus";
            RequireManager(function);
            int status = NativeMethods.TVMGR_GetSearchPrinterStatus();
            if (status < 0)
            {
                throw new TaviraException(function, status);
            }
            return status == 1;
        }

        public int FoundCount(SearchKind kind)
        {
            uint count = 0;
            Call("TVMGR_GetSearchedPrinterInfo",
                () => NativeMethods.TVMGR_GetSearchedPrinterInfo((int)kind, 0, IntPtr.Zero, ref count));
            return checked((int)count);
        }

        public FoundPrinter Found(SearchKind kind, int index)
        {
            return ReadFound(kind, index) ?? throw new TaviraException(
                "TVMGR_GetSearchedPrinterInfo", (int)Result.BadArgument, "no printer with this index was found");
        }

        /// <summary>The results of the last search of this kind.</summary>
        public IReadOnlyList<FoundPrinter> FoundPrinters(SearchKind kind)
        {
            var printers = new List<FoundPrinter>();
            for (FoundPrinter printer; (printer = ReadFound(kind, printers.Count)) != null;)
            {
                printers.Add(printer);
            }
            return printers;
        }

        /// <summary>Searches for 3 s and returns what was found; takes up to 36 s more when printers that are asked for
        /// their names have fallen silent.</summary>
        /// <param name="goOn">Called about every 50 ms with the time since the start; it ends the search by returning
        /// false, or by throwing, and then the names are still asked for. The next search and Dispose wait until 3 s
        /// after this one's start.</param>
        public IReadOnlyList<FoundPrinter> Search(SearchKind kind, Func<TimeSpan, bool> goOn = null)
        {
            Stopwatch watch = Stopwatch.StartNew();
            StartSearch(kind);
            bool isOver = false;
            try
            {
                while (IsSearching())
                {
                    if (goOn != null && !goOn(watch.Elapsed))
                    {
                        StopSearch(kind);
                        break;
                    }
                    Thread.Sleep(50);
                }
                isOver = true;
            }
            finally
            {
                if (!isOver)
                {
                    NativeMethods.TVMGR_StopSearchPrinter((uint)kind);
                }
            }
            return FoundPrinters(kind);
        }

        // --- Kept for hosts that call them: fixed answers, as TaviraManager.h says. ---

        public void ClearRegistList()
        {
            Call("TVMGR_ClearRegistList", NativeMethods.TVMGR_ClearRegistList);
        }

        public void SearchPort()
        {
            Call("TVMGR_SearchPort", () => NativeMethods.TVMGR_SearchPort(IntPtr.Zero, IntPtr.Zero, 0));
        }

        public void CheckPort()
        {
            Call("TVMGR_CheckPort", () => NativeMethods.TVMGR_CheckPort(0));
        }

        public void SendPrnFile()
        {
            Call("TVMGR_SendPrnFile", () => NativeMethods.TVMGR_SendPrnFile(IntPtr.Zero));
        }

        public void GetDeviceInfo()
        {
            Call("TVMGR_GetDeviceInfo", () => NativeMethods.TVMGR_GetDeviceInfo(IntPtr.Zero, IntPtr.Zero, 0, 0));
        }

        public void SetCallbackWnd(IntPtr window)
        {
            Call("TVMGR_SetCallbackWnd", () => NativeMethods.TVMGR_SetCallbackWnd(window));
        }

        // --- Helpers ---

        // Null at and beyond the end of the list.
        private FoundPrinter ReadFound(SearchKind kind, int index)
        {
            const string function = "TVMGR_GetSearchedPrinterInfo";
            RequireManager(function);
            CheckIndex(function, index);
            var record = new NativeMethods.Record();
            try
            {
                uint count = 0;
                Check(function, NativeMethods.TVMGR_GetSearchedPrinterInfo((int)kind, index, ref record, ref count));
                return index < count ? record.Read() : null;
            }
            finally
            {
                record.Release();
            }
        }

        private void SetRequest(Request request, byte[] primary, byte[] secondary)
        {
            Call("TVMGR_UpdateRegistList", () => NativeMethods.TVMGR_UpdateRegistList(
                (uint)request, primary, (uint)Length(primary), secondary, (uint)Length(secondary)));
        }

        private void Call(string function, Func<int> call)
        {
            RequireManager(function);
            Check(function, call());
        }

        private void RequireManager(string function)
        {
            if (!isOpen)
            {
                throw new TaviraException(function, (int)Result.NotInitialized);
            }
        }

        private static void Check(string function, int result)
        {
            if (result != (int)Result.OK)
            {
                throw new TaviraException(function, result);
            }
        }

        // The module raises a C++ exception for a negative one, which ends a process of another language.
        private static void CheckIndex(string function, int index)
        {
            if (index < 0)
            {
                throw new TaviraException(function, (int)Result.BadArgument, "a negative index");
            }
        }

        private static void CheckText(string function, string text)
        {
            if (text != null && text.IndexOf('\0') >= 0)
            {
                throw new TaviraException(function, (int)Result.BadArgument, "a zero character inside a text");
            }
        }

        private static byte[] Ascii(string function, string text)
        {
            return text == null ? null : Array.ConvertAll(text.ToCharArray(), c => c < 0x80 ? (byte)c
                : throw new TaviraException(function, (int)Result.BadArgument, "a string may hold ASCII only"));
        }

        private static int Length(byte[] bytes)
        {
            return bytes == null ? 0 : bytes.Length;
        }

        private static byte Flag(bool isWanted)
        {
            return isWanted ? (byte)1 : (byte)0;
        }
    }

    /// <summary>The module's functions by their own names: for what Manager does not offer.</summary>
    public static class NativeMethods
    {
        private const string Library = "TaviraManager";
        private const uint LoadWithAlteredSearchPath = 8;
        private const uint FailCriticalErrors = 1;

        /// <summary>The second function of a string manager.</summary>
        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        public delegate void FreeText(IntPtr manager, IntPtr data);

        /// <summary>TvmgrBackupInfo.</summary>
        [StructLayout(LayoutKind.Sequential)]
        public struct BackupInfo
        {
            public IntPtr Path;
            public byte Settings;
            public byte SectionP;
            public byte SectionI;
            public byte SectionT;
            public byte SectionF;
            public byte SectionC;
            public byte SectionB;
        }

        /// <summary>TvmgrFoundPrinter. What the module has written into it must be released.</summary>
        [StructLayout(LayoutKind.Sequential)]
        public struct Record
        {
            public int Kind;
            public IntPtr Text1;
            public IntPtr Text2;
            public IntPtr Text3;
            public int Value1;
            public int Value2;
            public IntPtr Text4;
            public IntPtr Text5;

            public FoundPrinter Read()
            {
                return new FoundPrinter
                {
                    Kind = (SearchKind)Kind, Name = TextOf(Text1), Identification = TextOf(Text2),
                    DevicePath = TextOf(Text3), VendorId = Value1, ProductId = Value2, ProductName = TextOf(Text4),
                    Address = TextOf(Text5)
                };
            }

            public void Release()
            {
                ReleaseText(ref Text1);
                ReleaseText(ref Text2);
                ReleaseText(ref Text3);
                ReleaseText(ref Text4);
                ReleaseText(ref Text5);
            }
        }

        /// <summary>The characters of a text that the module has written.</summary>
        public static string TextOf(IntPtr text)
        {
            return text == IntPtr.Zero ? "" : Marshal.PtrToStringUni(text, Marshal.ReadInt32(text, -16));
        }

        /// <summary>Frees a text that the module has written, through the manager in its own header.</summary>
        // Safe C# cannot lower the count atomically, and need not: a text that is ours alone is freed, and the only one
        // that the module shares is its empty one, which it never frees.
        public static void ReleaseText(ref IntPtr text)
        {
            if (text != IntPtr.Zero && Marshal.ReadInt32(text, -8) <= 1)
            {
                IntPtr manager = Marshal.ReadIntPtr(text, -24);
                IntPtr functions = Marshal.ReadIntPtr(manager);
                var free = (FreeText)Marshal.GetDelegateForFunctionPointer(
                    Marshal.ReadIntPtr(functions, IntPtr.Size), typeof(FreeText));
                free(manager, IntPtr.Add(text, -24));
            }
            text = IntPtr.Zero;
        }

        // The module asks for its port library by name, which Windows looks for beside the program that runs; that is not
        // this one when it runs in a host of the run-time's. Once both are loaded, they are found.
        internal static void LoadFromFolder(string folder)
        {
            if (Environment.OSVersion.Platform != PlatformID.Win32NT || string.IsNullOrEmpty(folder))
            {
                return;
            }
            // A damaged file makes Windows ask the user, in a box that blocks until it is answered: not here.
            bool isQuiet = SetThreadErrorMode(GetThreadErrorMode() | FailCriticalErrors, out uint earlier);
            try
            {
                foreach (string name in new[] { "Ferrolink.dll", "TaviraManager.dll" })
                {
                    string path = Path.GetFullPath(Path.Combine(folder, name));
                    if (File.Exists(path))
                    {
                        LoadLibraryEx(path, IntPtr.Zero, LoadWithAlteredSearchPath);
                    }
                }
            }
            finally
            {
                if (isQuiet)
                {
                    SetThreadErrorMode(earlier, out _);
                }
            }
        }

        [DllImport("kernel32", ExactSpelling = true)]
        private static extern uint GetThreadErrorMode();
        [DllImport("kernel32", ExactSpelling = true)]
        private static extern bool SetThreadErrorMode(uint mode, out uint earlier);
        [DllImport("kernel32", CharSet = CharSet.Unicode, EntryPoint = "LoadLibraryExW", ExactSpelling = true)]
        private static extern IntPtr LoadLibraryEx(string path, IntPtr reserved, uint flags);

        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_Initialize();
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_Terminate();
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_UpdatePortComInfo(
            IntPtr none, [MarshalAs(UnmanagedType.LPWStr)] string portName);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_UpdatePortComInfo(
            ref Record record, [MarshalAs(UnmanagedType.LPWStr)] string portName);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_GetPrinterDeviceInfo(ref Record record);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_LoadSetting([MarshalAs(UnmanagedType.I1)] bool all, int id);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_ClearLoadList();
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_SetLoadList(uint id);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_LoadSettingByList([MarshalAs(UnmanagedType.I1)] bool flag);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        public static extern bool TVMGR_GetSettingValue(int id, [Out] byte[] buffer, ref int length);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_ClearUpdateList();
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_SetUpdateList(uint id, byte[] value, int length);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_UpdatePrinterSetting();
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_UpdatePrinterSettingNoChangeDPI();
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_UpdatePrefix(byte control, byte format, byte delimiter);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_IsDefaultPrefix(out byte isDefault);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_GetPrinterStatus(ref uint status);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_DirectSendCommand(
            byte[] data, int length, [MarshalAs(UnmanagedType.I1)] bool allowResolutionChange);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_SetExecuteList(uint code, byte[] data, int length);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_ExecutePrinterOperation();
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_GetRegistFileArraySize(int kind, ref uint count);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_GetRegistFileArrayData(int kind, int index, [Out] char[] name, ref uint length);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_LoadStoredData(
            [MarshalAs(UnmanagedType.LPWStr)] string name, byte mode, uint timeoutMs);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_GetStoredData([Out] byte[] buffer, ref uint length);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_ClearRegistList();
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_UpdateRegistList(
            uint kind, byte[] primary, uint primarySize, byte[] secondary, uint secondarySize);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_RegistData();
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_DeleteData();
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_UpdateBackupInfo(ref BackupInfo info);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_Backup(byte reload);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_Restore([MarshalAs(UnmanagedType.LPWStr)] string path);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_StartSearchPrinter(uint kind, uint timeout);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_StopSearchPrinter(uint kind);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_GetSearchPrinterStatus();
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_GetSearchedPrinterInfo(int kind, int index, IntPtr none, ref uint count);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_GetSearchedPrinterInfo(int kind, int index, ref Record record, ref uint count);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_SearchPort(IntPtr reserved1, IntPtr reserved2, uint reserved3);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_CheckPort(uint reserved);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_SendPrnFile(IntPtr reserved);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_GetDeviceInfo(
            IntPtr reserved1, IntPtr reserved2, uint reserved3, uint reserved4);
        [DllImport(Library, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int TVMGR_SetCallbackWnd(IntPtr window);
    }
}
