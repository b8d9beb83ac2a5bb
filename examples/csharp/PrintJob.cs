// Finds a printer, shows its state and sends it a print file, with progress; Ctrl-C cancels.
// Usage: PrintJob.exe ADDRESS [FILE]     exit code 0: shown, or taken by the printer; 1: not
//
//   csc PrintJob.cs        with nuvprinter.dll and its companions beside PrintJob.exe
//   mcs PrintJob.cs && mono PrintJob.exe ...     on Linux
using System;
using System.Runtime.InteropServices;
using System.Text;

// What of nuvprinter.h is needed here: the structures field by field, calls by P/Invoke.
static class Nuv
{
    const string Dll = "nuvprinter";
    const CallingConvention C = CallingConvention.Cdecl;

    public const int Ok = 0;
    public const int LinkNetwork = 1;
    public const int StageSending = 3;
    public const int OutcomeNone = 0, OutcomeAccepted = 1, OutcomeSent = 2;

    [StructLayout(LayoutKind.Sequential)]
    public struct Int
    {
        public int Known, Raw;
        public int? Value { get { return Known != 0 ? Raw : (int?)null; } }
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct Text
    {
        public uint Flags;
        [MarshalAs(UnmanagedType.ByValArray, SizeConst = 508)] public byte[] Bytes;
        public string Value
        {
            get { return Flags == 0 ? null : Encoding.UTF8.GetString(Bytes, 0, Array.IndexOf(Bytes, (byte)0)); }
        }
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct Error
    {
        public uint Size;
        public int Result, Command, SystemError;
        public Text Message;
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct Call
    {
        public uint Size;
        public int TimeLimitMs;
        public StillWanted StillWanted;
        public IntPtr User;
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct SearchOptions
    {
        public uint Size;
        public int Links;
        public IntPtr Addresses;
        public int UdpPort, AddressesOnly;
        public IntPtr Found, User;
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct Identity
    {
        public uint Size;
        public int Link;
        public Text Address;
        public int TcpPort, Contact;
        public Text Mac, Name, Model, Serial, Nickname, Firmware, Controller, Manufactured;
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct State
    {
        public uint Size, Reserved;
        public Int Value, ErrorNumber, Layer, Percent, MinutesLeft;
        public Text JobName;
        public long EndsAt;
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct Progress
    {
        public uint Size;
        public int Stage;
        public long BytesSent, BytesTotal;
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct SendOptions
    {
        public uint Size;
        public int Accept, AndroidKind, Reserved;
        public ProgressFunction Progress;
        public IntPtr User;
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct Outcome
    {
        public uint Size;
        public int Kind, Findings, MayHoldJob;
        public long BytesSent;
        public Int JobIndex;
        public Text Message;
    }

    // A delegate that is handed over must be kept until the call is over, and must not throw.
    [UnmanagedFunctionPointer(C)] public delegate int StillWanted(IntPtr user);
    [UnmanagedFunctionPointer(C)] public delegate int ProgressFunction(ref Progress progress, IntPtr user);

    // Handles that the garbage collector cannot lose while a call is under way.
    public sealed class ListHandle : SafeHandle
    {
        public ListHandle() : base(IntPtr.Zero, true) { }
        public override bool IsInvalid { get { return handle == IntPtr.Zero; } }
        protected override bool ReleaseHandle() { nuv_list_free(handle); return true; }
    }

    public sealed class PrinterHandle : SafeHandle
    {
        public PrinterHandle() : base(IntPtr.Zero, true) { }
        public override bool IsInvalid { get { return handle == IntPtr.Zero; } }
        protected override bool ReleaseHandle() { nuv_printer_free(handle); return true; }
    }

    [DllImport(Dll, CallingConvention = C)]
    public static extern int nuv_search_printers(
        out ListHandle list, ref SearchOptions options, ref Call call, ref Error error);
    [DllImport(Dll, CallingConvention = C)] public static extern int nuv_list_count(ListHandle list);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int nuv_list_get_identity(ref Identity item, ListHandle list, int index);
    [DllImport(Dll, CallingConvention = C)] static extern void nuv_list_free(IntPtr list);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int nuv_printer_open(
        out PrinterHandle printer, ref Identity found, ref Call call, ref Error error);
    [DllImport(Dll, CallingConvention = C)] static extern void nuv_printer_free(IntPtr printer);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int nuv_printer_get_state(
        ref State state, PrinterHandle printer, ref Call call, ref Error error);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int nuv_printer_send(
        ref Outcome outcome, PrinterHandle printer, byte[] path, ref SendOptions options, ref Call call,
        ref Error error);

    public static uint SizeOf<T>() { return (uint)Marshal.SizeOf(typeof(T)); }

    // Texts go in as UTF-8 with a zero byte; the default would be the system's code page.
    public static byte[] Utf8(string text) { return Encoding.UTF8.GetBytes(text + "\0"); }

    public static void Check(int result, Error error)
    {
        if (result != Ok) throw new Exception(error.Message.Value ?? "result " + result);
    }
}

static class Program
{
    static volatile bool cancelled;
    static Nuv.Error error = new Nuv.Error { Size = Nuv.SizeOf<Nuv.Error>() };
    static Nuv.Call call = new Nuv.Call
    {
        Size = Nuv.SizeOf<Nuv.Call>(),
        StillWanted = user => cancelled ? 0 : 1
    };

    static Nuv.Identity Find(string address)
    {
        var options = new Nuv.SearchOptions { Size = Nuv.SizeOf<Nuv.SearchOptions>(), Links = Nuv.LinkNetwork };
        var addresses = GCHandle.Alloc(Nuv.Utf8(address), GCHandleType.Pinned);
        try
        {
            options.Addresses = addresses.AddrOfPinnedObject();
            Nuv.ListHandle list;
            Nuv.Check(Nuv.nuv_search_printers(out list, ref options, ref call, ref error), error);
            using (list)
            {
                var found = new Nuv.Identity { Size = Nuv.SizeOf<Nuv.Identity>() };
                if (Nuv.nuv_list_count(list) == 0) throw new Exception("no printer at " + address);
                Nuv.Check(Nuv.nuv_list_get_identity(ref found, list, 0), error);
                return found;
            }
        }
        finally { addresses.Free(); }
    }

    static bool Send(Nuv.PrinterHandle printer, string path)
    {
        Nuv.ProgressFunction show = (ref Nuv.Progress at, IntPtr user) =>
        {
            if (at.Stage == Nuv.StageSending) Console.Error.WriteLine("{0} of {1}", at.BytesSent, at.BytesTotal);
            return cancelled ? 0 : 1;
        };
        var options = new Nuv.SendOptions { Size = Nuv.SizeOf<Nuv.SendOptions>(), Progress = show };
        var outcome = new Nuv.Outcome { Size = Nuv.SizeOf<Nuv.Outcome>() };
        int result = Nuv.nuv_printer_send(ref outcome, printer, Nuv.Utf8(path), ref options, ref call, ref error);
        GC.KeepAlive(show);
        if (outcome.Kind == Nuv.OutcomeNone) Nuv.Check(result, error);
        Console.WriteLine(outcome.Message.Value);
        return outcome.Kind == Nuv.OutcomeAccepted || outcome.Kind == Nuv.OutcomeSent;
    }

    static int Main(string[] arguments)
    {
        Console.CancelKeyPress += (sender, press) => { cancelled = true; press.Cancel = true; };
        try
        {
            var found = Find(arguments[0]);
            Nuv.PrinterHandle printer;
            Nuv.Check(Nuv.nuv_printer_open(out printer, ref found, ref call, ref error), error);
            using (printer)
            {
                var state = new Nuv.State { Size = Nuv.SizeOf<Nuv.State>() };
                Nuv.Check(Nuv.nuv_printer_get_state(ref state, printer, ref call, ref error), error);
                Console.WriteLine("{0}: state {1}", found.Serial.Value, state.Value.Value);
                return arguments.Length < 2 || Send(printer, arguments[1]) ? 0 : 1;
            }
        }
        catch (Exception failure)
        {
            Console.Error.WriteLine("PrintJob: " + failure.Message);
            return 1;
        }
    }
}
