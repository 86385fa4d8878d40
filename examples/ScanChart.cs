// Scans rows of patches and prints their spectra: a program in C# for .NET and Mono, on top of J4Tavla.cs.
//
// usage: ScanChart [-o KEY=VALUE]... X1,Y1,X2,Y2,PATCHES...
//   A row is given by its first and last point on bare paper, in millimetres, and by its number of patches.
//   -o  sets an option before anything else, for instance on a virtual table Simulator.ChartFile=chart.cgats
//
// For each patch one line goes to standard output: row and patch, counted from 1, and 36 reflectance factors, separated
// by tabs. The exit code is 0 when every patch of every row was found.
using System;
using System.Collections.Generic;
using System.Globalization;
using System.Linq;
using J4Tavla;

static class ScanChart {
    static bool ScanRows(Table table, List<string[]> rows) {
        table.CheckTable();
        Console.Error.WriteLine("Table {0} with instrument {1}", table.SerialNumber, table.TableInstrument);
        table.MeasurementMode = "ScanningReflectance";
        table.GoHome();
        table.Calibrate();
        bool good = true;
        for (int row = 0; row < rows.Count; ++row) {
            float[] ends = rows[row].Take(4).Select(word => float.Parse(word, CultureInfo.InvariantCulture)).ToArray();
            Spectrum[] spectra = table.Scan(new Position(ends[0], ends[1]), new Position(ends[2], ends[3]));
            if (spectra.Length != int.Parse(rows[row][4], CultureInfo.InvariantCulture)) {
                Console.Error.WriteLine("Row {0} has {1} patches, but {2} were found.", row + 1, rows[row][4],
                                        spectra.Length);
                good = false;
            }
            for (int patch = 0; patch < spectra.Length; ++patch) {
                Console.WriteLine("{0}\t{1}\t{2}", row + 1, patch + 1, string.Join("\t", spectra[patch].Select(
                    value => value.ToString("F6", CultureInfo.InvariantCulture))));
            }
        }
        table.GoHome();
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
            using (var table = new Table()) {
                for (int i = 1; i < first; i += 2) {
                    string[] option = arguments[i].Split(new[] {'='}, 2);
                    table[option[0]] = option.Length == 2 ? option[1] : "";
                }
                return ScanRows(table, rows) ? 0 : 1;
            }
        } catch (Exception error) when (error is TableException || error is DllNotFoundException ||
                                        error is FormatException) {
            Console.Error.WriteLine(error.Message);
            return 1;
        }
    }
}
