// Scans rows of patches and prints their spectra: the first program in C#, for .NET and Mono, without any package.
//
// usage: ScanChart [-o KEY=VALUE]... X1,Y1,X2,Y2,PATCHES...
//   A row is given by its first and last point on bare paper, in millimetres, and by its number of patches.
//   -o  sets an option before anything else, for instance on a virtual table Simulator.ChartFile=chart.cgats
// The table's library (j4tavla64.dll, libj4tavla64.so) is looked for where the system looks for libraries.
//
// For each patch one line goes to standard output: row and patch, counted from 1, and 36 reflectance factors, separated
// by tabs. The exit code is 0 when every patch of every row was found.
using System;
using System.Collections.Generic;
using System.Globalization;
using System.Linq;
using System.Runtime.InteropServices;

/// A call of the library failed; the text says which and why.
class TableException : Exception {
    public TableException(string message) : base(message) {}
}

/// The functions of the table's library that this program needs.
static class Library {
    const string File = "j4tavla64";

    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    public delegate void ErrorHandler(IntPtr function, int status, IntPtr message);

    [DllImport(File, CallingConvention = CallingConvention.Cdecl)]
    public static extern IntPtr J4_RegisterErrorHandler(ErrorHandler handler);
    [DllImport(File, CallingConvention = CallingConvention.Cdecl)]
    public static extern int J4_IsTableConnected();
    [DllImport(File, CallingConvention = CallingConvention.Cdecl)]
    public static extern int J4_GoToHomePosition();
    [DllImport(File, CallingConvention = CallingConvention.Cdecl)]
    public static extern int J4_Calibrate();
    [DllImport(File, CallingConvention = CallingConvention.Cdecl)]
    public static extern int J4_Scan(float startX, float startY, float endX, float endY);
    [DllImport(File, CallingConvention = CallingConvention.Cdecl)]
    public static extern int J4_GetNumberOfAvailableSamples();
    [DllImport(File, CallingConvention = CallingConvention.Cdecl)]
    public static extern int J4_GetSpectrum([Out] float[] spectrum, uint index);
    [DllImport(File, CallingConvention = CallingConvention.Cdecl)]
    public static extern int J4_SetOption(string key, string value);
    // The text belongs to the library: it must not be freed, so it does not come as a string.
    [DllImport(File, CallingConvention = CallingConvention.Cdecl)]
    public static extern IntPtr J4_GetOption(string key);
}

static class ScanChart {
    const int SpectrumLength = 36;

    static string lastError = "";
    // The library calls it until another one is registered, so the garbage collector must not take it.
    static readonly Library.ErrorHandler handler = KeepError;

    static void KeepError(IntPtr function, int status, IntPtr message) {
        lastError = string.Format("{0} failed with status {1}: {2}", Marshal.PtrToStringAnsi(function), status,
                                  Marshal.PtrToStringAnsi(message).Trim());
    }

    static string Option(string key) {
        return Marshal.PtrToStringAnsi(Library.J4_GetOption(key));
    }

    /// Throws when a call did not give the status 0.
    static void Check(int status) {
        if (status != 0) {
            // Without the instrument's library there is no call of the handler, only a status.
            throw new TableException(lastError != "" ? lastError : "status " + status + ": " + Option("LastError"));
        }
    }

    /// Scans a row and prints the patches that were found. Gives their number.
    static int ScanRow(int number, float[] ends) {
        Check(Library.J4_Scan(ends[0], ends[1], ends[2], ends[3]));
        int found = Library.J4_GetNumberOfAvailableSamples();
        for (int patch = 0; patch < found; ++patch) {
            var spectrum = new float[SpectrumLength];
            Check(Library.J4_GetSpectrum(spectrum, (uint)patch));
            Console.WriteLine("{0}\t{1}\t{2}", number, patch + 1, string.Join("\t", spectrum.Select(
                value => value.ToString("F6", CultureInfo.InvariantCulture))));
        }
        return found;
    }

    static bool ScanRows(IEnumerable<string[]> rows) {
        Check(Library.J4_IsTableConnected());
        Console.Error.WriteLine("Table {0} with instrument {1}", Option("J4TSerialNumber"),
                                Option("J4TJ4SerialNumber"));
        Check(Library.J4_SetOption("MeasurementMode", "ScanningReflectance"));
        Check(Library.J4_GoToHomePosition());
        Check(Library.J4_Calibrate());
        bool good = true;
        int number = 0;
        foreach (string[] row in rows) {
            float[] ends = row.Take(4).Select(word => float.Parse(word, CultureInfo.InvariantCulture)).ToArray();
            int patches = int.Parse(row[4], CultureInfo.InvariantCulture);
            int found = ScanRow(++number, ends);
            if (found != patches) {
                Console.Error.WriteLine("Row {0} has {1} patches, but {2} were found.", number, patches, found);
                good = false;
            }
        }
        Check(Library.J4_GoToHomePosition());
        return good;
    }

    static int Main(string[] arguments) {
        int first = 0;
        while (first + 1 < arguments.Length && arguments[first] == "-o") {
            first += 2;
        }
        List<string[]> rows = arguments.Skip(first).Select(text => text.Split(',')).ToList();
        if (rows.Count == 0 || rows.Any(row => row.Length != 5)) {
            Console.Error.WriteLine("usage: ScanChart [-o KEY=VALUE]... X1,Y1,X2,Y2,PATCHES...");
            return 2;
        }
        try {
            Library.J4_RegisterErrorHandler(handler);
            for (int i = 1; i < first; i += 2) {
                string[] option = arguments[i].Split(new[] {'='}, 2);
                Check(Library.J4_SetOption(option[0], option.Length == 2 ? option[1] : ""));
            }
            return ScanRows(rows) ? 0 : 1;
        } catch (Exception error) when (error is TableException || error is DllNotFoundException ||
                                        error is FormatException) {
            Console.Error.WriteLine(error.Message);
            return 1;
        }
    }
}
