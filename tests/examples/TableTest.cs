// J4Tavla.cs on the virtual table: what its methods and properties give, how they fail, and its events. Prints each
// expectation that fails; the exit code is their number.
using System;
using System.Collections.Generic;
using System.Globalization;
using System.IO;
using System.Linq;
using System.Threading;
using J4Tavla;

static class TableTest {
    static int failed;

    static void Expect<T>(T found, T expected, string what) {
        if (!EqualityComparer<T>.Default.Equals(found, expected)) {
            Console.Error.WriteLine("{0}: {1} instead of {2}", what, found, expected);
            ++failed;
        }
    }

    /// "FUNCTION STATUS" of a call that fails, else the type of what it throws, or nothing.
    static string FailureOf(Action call) {
        try {
            call();
        } catch (TableException error) {
            Expect(error.Trace.Contains(error.Text), true, error.Message + ": has a trace");
            Expect(error.Message.StartsWith(error.Function + " failed with status "), true, error.Message);
            return error.Function + " " + (int)error.Status;
        } catch (Exception error) {
            return error.GetType().Name;
        }
        return "";
    }

    /// A chart of two patches of 20 mm with reflectances 0.2 and 0.6, at y 250 and from x 200 to 240.
    static void LayChart(Table table) {
        string file = Path.GetTempFileName();
        Func<string, IEnumerable<string>> bands = text => Enumerable.Range(0, Spectrum.Length).Select(
            band => text.Replace("#", Spectrum.Wavelength(band).ToString()));
        File.WriteAllLines(file, new[] {
            "CGATS.17", "BEGIN_DATA_FORMAT", "SAMPLE_NAME X Y WIDTH HEIGHT " + string.Join(" ", bands("SPECTRAL_NM#")),
            "END_DATA_FORMAT", "BEGIN_DATA", "A 210 250 20 20 " + string.Join(" ", bands("0.2")),
            "B 230 250 20 20 " + string.Join(" ", bands("0.6")), "END_DATA"});
        table["Simulator.ChartFile"] = file;
        File.Delete(file);
    }

    static void ValuesAreThoseOfTheTable(Table table) {
        LayChart(table);
        table.CheckTable();
        table.CheckInstrument();
        table.GoHome();
        table.Calibrate();
        table.MeasurementMode = "ScanningReflectance";
        Spectrum[] spectra = table.Scan(new Position(192, 250), new Position(248, 250));
        Expect(string.Join(" ", spectra.Select(spectrum => spectrum.At(550).ToString("F3", CultureInfo.InvariantCulture))),
               "0.200 0.600", "patches");
        Expect(spectra[1].SequenceEqual(table.GetSpectrum(1)), true, "the spectrum of a sample");
        Densities densities = table.GetDensities(0);
        Expect(Math.Round(densities.Cyan, 3), 0.699, "density");
        Expect(table.GetDensity(0), new[] {densities.Cyan, densities.Magenta, densities.Yellow, densities.Black}.Max(),
               "the highest density");
        Colour colour = table.GetColour(0);
        Expect(colour.Space + Math.Round(colour.First, 1), "CIELab" + Math.Round(116 * Math.Pow(0.2, 1 / 3.0) - 16, 1),
               "colour");
        table.SetSubstrate(spectra[0]);
        Expect(table.GetDensity(0), 0f, "density over the substrate");
        table.MoveTo(new Position(230, 250));
        Expect(table.GetPosition().X, 230f, "position");
        table.MeasurementMode = "SingleReflectance";
        Expect(Math.Round(table.Measure()[35], 3), 0.6, "single measurement");
        Expect(table.SampleCount(), 1, "number of samples");
        table.WriteRaw(new[] {(byte)';', (byte)'a', (byte)'0'});
        Expect((char)table.ReadRaw(14, 100)[0], ':', "reply");
        table.SynchronizeWhiteBases(spectra[1]);
        Expect(table["J4TFlash_3000"].StartsWith("0.6"), true, "white base");
    }

    static void OptionsHaveTheirTypes(Table table) {
        table.ScanSpeed = 80;
        table.HoldPosition = true;
        table.PatchRecognition = Recognition.BySamples;
        table.PlacementFactor = 2;
        table.UserUnit = Unit.Inch;
        Expect(table["J4TScanSpeed"] + table["J4THoldPosition"] + table["J4TRecognitionAlgorithm"], "80yes1", "texts");
        Expect(table.ScanSpeed, 80, "number");
        foreach (string[] pair in new[] {new[] {"J4TScanSpeed\0", "90"}, new[] {"J4TScanSpeed", "90\0"}}) {
            Expect(FailureOf(() => table[pair[0]] = pair[1]), "ArgumentException", "a NUL");
        }
        Expect(FailureOf(() => Expect(table["J4TScanSpeed\0"], "", "no value")), "ArgumentException", "a NUL");
        Expect(table.HoldPosition, true, "switch");
        Expect(table.PlacementFactor, 2f, "real");
        Expect(table.UserUnit, Unit.Inch, "unit");
        Expect(table.TableInstrument, "240118", "text");
        Expect(table.WhiteBaseTime > DateTimeOffset.FromUnixTimeSeconds(0), true, "time");
    }

    static void FailuresAndEvents(Table table) {
        var heard = new List<string>();
        Action<TableException> keep = error => {
            heard.Add(error.Function);
            if (heard.Count == 1) {
                Expect(FailureOf(() => Expect(table[""], "", "no value")), "J4_GetOption 10", "a failure in an event");
                Expect(FailureOf(table.Reset), "InvalidOperationException", "a reset in an event");
            }
        };
        table.Failed += keep;
        table.DeviceMessage += (message, text) => heard.Add(message + " " + text);
        Expect(FailureOf(() => table.GetSpectrum(9)), "J4_GetSpectrum 7", "no sample");
        Expect(string.Join(",", heard), "J4_GetSpectrum,J4_GetOption", "events");
        table.Reset();
        heard.Clear();
        GC.Collect();
        table["Simulator.Unplug"] = "240118";
        Expect(FailureOf(table.CheckTable), "J4_IsTableConnected 100", "no instrument");
        Expect(string.Join(",", heard), "1 240118,J4_IsTableConnected", "events after a reset");
        table.Failed -= keep;
        Action<TableException> thrower = error => { throw new FormatException(); };
        table.Failed += thrower;
        Expect(FailureOf(() => table.GetSpectrum(9)), "FormatException", "thrown in an event");
        table.Failed -= thrower;
        Expect(table.SampleCount(), 0, "thrown once");
    }

    static void ThreadsTakeTurns(Table table) {
        Action work = () => {
            for (int i = 0; i < 300; ++i) {
                Expect(table.Version, "Version 1.1.4  Build 104", "version");
                Expect(FailureOf(() => table.GetDensity(9)), "J4_GetDensity 7", "failure");
            }
        };
        var other = new Thread(() => work());
        other.Start();
        work();
        other.Join();
    }

    static int Main() {
        foreach (Action<Table> test in new Action<Table>[] {ValuesAreThoseOfTheTable, OptionsHaveTheirTypes,
                                                             FailuresAndEvents, ThreadsTakeTurns}) {
            using (var table = new Table()) {
                table["Simulator.Reset"] = "yes";
                test(table);
                Expect(FailureOf(() => new Table()), "InvalidOperationException", "a second table");
            }
        }
        Expect(FailureOf(() => new Table("/no/such/library")), "DllNotFoundException", "no library");
        var disposed = new Table();
        disposed.Dispose();
        Expect(FailureOf(disposed.GoHome), "ObjectDisposedException", "a call of what was disposed of");
        Expect(FailureOf(() => new Spectrum(new float[3])), "ArgumentException", "a spectrum of 3");
        Expect(FailureOf(() => new Spectrum(new float[36]).At(375)), "ArgumentOutOfRangeException", "375 nm");
        return failed;
    }
}
