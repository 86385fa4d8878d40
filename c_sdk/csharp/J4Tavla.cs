// The table's programming interface for C# (.NET Standard 2.0, C# 7; .NET, .NET Framework and Mono): one source file to
// compile into a program, without any package. It has the same objects as j4tavla.hpp: values instead of buffers,
// exceptions instead of statuses, options as properties, handlers as events, and a lock around all calls. The functions
// under it, their units and statuses are told in j4tavla.h.
//
// The library is loaded by file name here and not by [DllImport], so that it is found where every program finds it:
// beside the program, else where the system looks, with LD_LIBRARY_PATH first. Mono looks for a [DllImport] in its own
// library folder, /usr/lib, before it asks the system, and would take an installed library instead of the virtual one.
using System;
using System.Collections;
using System.Collections.Generic;
using System.ComponentModel;
using System.Globalization;
using System.IO;
using System.Runtime.ExceptionServices;
using System.Runtime.InteropServices;
using Microsoft.Win32.SafeHandles;

namespace J4Tavla {
    /// <summary>The statuses of the table's library. One of the instrument's library can be any other number.</summary>
    public enum Status {
        /// <summary>Success.</summary>
        NoError = 0,
        /// <summary>The table answered late, wrongly or with an error.</summary>
        DeviceFault = 1,
        /// <summary>No table, or the channel to it failed.</summary>
        DeviceNotConnected = 2,
        /// <summary>The calibration failed its checks.</summary>
        NotCalibrated = 3,
        /// <summary>Any other failure; see the text.</summary>
        Exception = 9,
        /// <summary>An argument or a value was refused.</summary>
        ResourceFault = 10,
        /// <summary>No connected instrument sits in the table.</summary>
        SpectrophotometerNotConnected = 100,
        /// <summary>The arm did not reach its target.</summary>
        PositionNotReached = 101,
        /// <summary>The target lies outside the work area.</summary>
        IllegalPosition = 102,
        /// <summary>The white base is not usable.</summary>
        WhiteBase = 103,
        /// <summary>The instrument's library can't be loaded.</summary>
        FrameFailure = 104
    }

    /// <summary>A call that failed: the C function, its status, and the texts that tell why.</summary>
    public class TableException : Exception {
        /// <summary>Of a call that failed.</summary>
        public TableException(string function, int status, string text, string trace)
            : base(string.Format(CultureInfo.InvariantCulture, "{0} failed with status {1}: {2}", function, status,
                                 text.TrimEnd())) {
            Function = function;
            Status = (Status)status;
            Text = text;
            Trace = trace;
        }

        /// <summary>Name of the C function, for instance "J4_Scan".</summary>
        public string Function { get; }
        /// <summary>Its status.</summary>
        public Status Status { get; }
        /// <summary>Name of the status in j4tavla.h; "J4_Result" for one that has none there.</summary>
        public string Name {
            get { return "J4_Result" + (Enum.IsDefined(typeof(Status), Status) ? Status.ToString() : ""); }
        }
        /// <summary>The option "LastError" of this failure.</summary>
        public string Text { get; }
        /// <summary>The option "ExtendedErrorInformation" of this failure.</summary>
        public string Trace { get; }
    }

    /// <summary>A place on the bed, in the user's unit: millimetres unless Table.UserUnit says otherwise.</summary>
    public struct Position {
        /// <summary>Of two coordinates.</summary>
        public Position(float x, float y) {
            X = x;
            Y = y;
        }

        /// <summary>From the tower's axis, in the user's unit.</summary>
        public float X { get; }
        /// <summary>From the tower's axis, in the user's unit.</summary>
        public float Y { get; }
    }

    /// <summary>36 reflectance factors, 1 for the perfect diffuser, at 380 to 730 nm in steps of 10 nm.</summary>
    public sealed class Spectrum : IReadOnlyList<float> {
        /// <summary>Number of values.</summary>
        public const int Length = 36;
        /// <summary>Wavelength of the first value, nm.</summary>
        public const int FirstWavelength = 380;
        /// <summary>From one wavelength to the next, nm.</summary>
        public const int WavelengthStep = 10;

        readonly float[] values;

        /// <summary>Of 36 values, which are copied.</summary>
        public Spectrum(float[] values) {
            if (values.Length != Length) {
                throw new ArgumentException("a spectrum has 36 values", "values");
            }
            this.values = (float[])values.Clone();
        }

        /// <summary>36.</summary>
        public int Count { get { return Length; } }
        /// <summary>The value of a band, counted from 0.</summary>
        public float this[int band] { get { return values[band]; } }

        /// <summary>Wavelength of a band, nm.</summary>
        public static int Wavelength(int band) {
            return FirstWavelength + band * WavelengthStep;
        }

        /// <summary>The value at a wavelength (nm) that a spectrum has.</summary>
        public float At(int nanometres) {
            int band = (nanometres - FirstWavelength) / WavelengthStep;
            if (band < 0 || band >= Length || Wavelength(band) != nanometres) {
                throw new ArgumentOutOfRangeException("nanometres");
            }
            return values[band];
        }

        /// <summary>A copy of the values.</summary>
        public float[] ToArray() {
            return (float[])values.Clone();
        }

        /// <summary>The values in order of wavelength.</summary>
        public IEnumerator<float> GetEnumerator() {
            return ((IEnumerable<float>)values).GetEnumerator();
        }

        IEnumerator IEnumerable.GetEnumerator() {
            return GetEnumerator();
        }
    }

    /// <summary>Colour values of a sample.</summary>
    public struct Colour {
        /// <summary>Of three values in a colour space.</summary>
        public Colour(string space, float first, float second, float third) {
            Space = space;
            First = first;
            Second = second;
            Third = third;
        }

        /// <summary>What the values are: Table.ColourSpace when they were read.</summary>
        public string Space { get; }
        /// <summary>L*, X or x.</summary>
        public float First { get; }
        /// <summary>a*, C*, Y or y.</summary>
        public float Second { get; }
        /// <summary>b*, h, Z or Y.</summary>
        public float Third { get; }
    }

    /// <summary>Densities of a sample.</summary>
    public struct Densities {
        /// <summary>Of four values and the further one.</summary>
        public Densities(float cyan, float magenta, float yellow, float black, int index) {
            Cyan = cyan;
            Magenta = magenta;
            Yellow = yellow;
            Black = black;
            Index = index;
        }

        /// <summary>Decimal logarithm.</summary>
        public float Cyan { get; }
        /// <summary>Decimal logarithm.</summary>
        public float Magenta { get; }
        /// <summary>Decimal logarithm.</summary>
        public float Yellow { get; }
        /// <summary>Decimal logarithm.</summary>
        public float Black { get; }
        /// <summary>One more value of the instrument's library: the place of the highest one.</summary>
        public int Index { get; }
    }

    /// <summary>What a sample of Table.Scan is.</summary>
    public enum Recognition {
        /// <summary>What the instrument saw in one integration time.</summary>
        None = 0,
        /// <summary>A patch, told by the samples alone.</summary>
        BySamples = 1,
        /// <summary>A patch, told by samples and positions.</summary>
        ByPositions = 2
    }

    /// <summary>The unit of coordinates.</summary>
    public enum Unit {
        /// <summary>1 mm.</summary>
        Millimetre = 0,
        /// <summary>0.1 mm.</summary>
        TenthMillimetre = 1,
        /// <summary>25.4 mm.</summary>
        Inch = 2
    }

    /// <summary>The table with the instrument in it. There is one in a process, as there is one library under it. Threads
    /// may share it: each method is one call, or a few that belong together, under a lock. Every method and property
    /// throws a TableException when the library gives a status other than 0. Dispose lets the table go.</summary>
    public sealed class Table : IDisposable {
        static readonly object calls = new object();
        // As long as the library has its delegates the garbage collector must not take the table.
        static Table current;

        readonly Library library;
        readonly Library.ErrorHandler onFailure;
        readonly Library.DeviceMessageHandler onDeviceMessage;
        TableException failure;
        int depth;
        ExceptionDispatchInfo thrownByHandler;

        /// <summary>Loads the table's library and the instrument's; the table is connected by the first call that needs
        /// it.</summary>
        /// <param name="libraryFile">the library's file; null: j4tavla64.dll or libj4tavla64.so, beside the program or
        /// where the system looks</param>
        /// <exception cref="DllNotFoundException">The table's library can't be loaded.</exception>
        /// <exception cref="TableException">With status 104: the instrument's library can't be loaded.</exception>
        /// <exception cref="InvalidOperationException">There is a Table already.</exception>
        public Table(string libraryFile = null) {
            lock (calls) {
                if (current != null) {
                    throw new InvalidOperationException("there is one J4Tavla.Table in a process");
                }
                library = new Library(libraryFile);
                // Without the instrument's library its failure is the value of every option.
                string version = library.Option("J4TVersion");
                if (!version.StartsWith("Version ", StringComparison.Ordinal)) {
                    library.Dispose();
                    throw new TableException("J4_GetOption", (int)Status.FrameFailure, version, "");
                }
                onFailure = KeepFailure;
                onDeviceMessage = PassDeviceMessage;
                Register(onFailure, onDeviceMessage);
                current = this;
            }
        }

        /// <summary>Unloads the library, which lets the table go.</summary>
        public void Dispose() {
            lock (calls) {
                if (current == this) {
                    if (depth > 0) {
                        throw new InvalidOperationException("the table can't be disposed of in a handler");
                    }
                    Register(null, null);
                    current = null;
                    library.Dispose();
                }
            }
        }

        /// <summary>Raised with each failure, before its exception is thrown; a handler may read options. What it throws
        /// takes the place of the failure.</summary>
        public event Action<TableException> Failed;

        /// <summary>Raised with each device message: its number (1: the instrument has gone) and what it is about. A
        /// handler must not call the table. What it throws leaves the call that is under way when that is
        /// done.</summary>
        public event Action<int, string> DeviceMessage;

        /// <summary>To be locked where several calls belong together.</summary>
        public object SyncRoot { get { return calls; } }

        /// <summary>Connects to the table where that has not been done: throws why there is none.</summary>
        public void CheckTable() {
            Check("J4_IsTableConnected", library.IsTableConnected);
        }

        /// <summary>Throws unless the selected instrument is connected.</summary>
        public void CheckInstrument() {
            Check("J4_IsConnected", library.IsConnected);
        }

        /// <summary>Calibrates on the white tile; GoHome first.</summary>
        public void Calibrate() {
            Check("J4_Calibrate", library.Calibrate);
        }

        /// <summary>The instrument's button, as its library tells it.</summary>
        public int KeyPressed() {
            return Run(() => library.KeyPressed());
        }

        /// <summary>Moves the arm to the white tile.</summary>
        public void GoHome() {
            Check("J4_GoToHomePosition", library.GoToHomePosition);
        }

        /// <summary>Moves the arm and waits for its arrival.</summary>
        public void MoveTo(Position target) {
            Check("J4_SetPosition", () => library.SetPosition(target.X, target.Y));
        }

        /// <summary>Where the arm is.</summary>
        public Position GetPosition() {
            float x = 0;
            float y = 0;
            Check("J4_GetPosition", () => library.GetPosition(out x, out y));
            return new Position(x, y);
        }

        /// <summary>Takes one measurement where the instrument stands.</summary>
        public Spectrum Measure() {
            lock (calls) {
                Check("J4_TriggerMeasurement", library.TriggerMeasurement);
                return GetSpectrum(0);
            }
        }

        /// <summary>Takes so many samples where the instrument stands. After a Scan that recognised patches set
        /// PatchRecognition to None before, and back before the next one: else patches are looked for in the
        /// samples.</summary>
        public Spectrum[] MeasureSamples(int count) {
            lock (calls) {
                Check("J4_TriggerCountedScan", () => library.TriggerCountedScan((uint)count));
                return Spectra();
            }
        }

        /// <summary>Scans a row, which begins and ends on bare paper: one spectrum for each patch that was
        /// found.</summary>
        public Spectrum[] Scan(Position start, Position end) {
            lock (calls) {
                Check("J4_Scan", () => library.Scan(start.X, start.Y, end.X, end.Y));
                return Spectra();
            }
        }

        /// <summary>Number of samples of the last measurement or scan.</summary>
        public int SampleCount() {
            return Math.Max(Run(() => library.GetNumberOfAvailableSamples()), 0);
        }

        /// <summary>All samples.</summary>
        public Spectrum[] Spectra() {
            lock (calls) {
                var spectra = new Spectrum[SampleCount()];
                for (int i = 0; i < spectra.Length; ++i) {
                    spectra[i] = GetSpectrum(i);
                }
                return spectra;
            }
        }

        /// <summary>The spectrum of a sample, counted from 0.</summary>
        public Spectrum GetSpectrum(int index) {
            var values = new float[Spectrum.Length];
            Check("J4_GetSpectrum", () => library.GetSpectrum(values, (uint)index));
            return new Spectrum(values);
        }

        /// <summary>The colour of a sample, counted from 0.</summary>
        public Colour GetColour(int index) {
            lock (calls) {
                string space = ColourSpace;
                var values = new float[3];
                Check("J4_GetTriStimulus", () => library.GetTriStimulus(values, (uint)index));
                return new Colour(space, values[0], values[1], values[2]);
            }
        }

        /// <summary>The densities of a sample, counted from 0.</summary>
        public Densities GetDensities(int index) {
            var values = new float[4];
            int further = 0;
            Check("J4_GetDensities", () => library.GetDensities(values, ref further, (uint)index));
            return new Densities(values[0], values[1], values[2], values[3], further);
        }

        /// <summary>One density of a sample, counted from 0.</summary>
        public float GetDensity(int index) {
            float density = 0;
            Check("J4_GetDensity", () => library.GetDensity(out density, (uint)index));
            return density;
        }

        /// <summary>The paper that densities refer to.</summary>
        public void SetSubstrate(Spectrum substrate) {
            Check("J4_SetSubstrate", () => library.SetSubstrate(substrate.ToArray()));
        }

        /// <summary>Writes a new white base to the table's flash; see j4tavla.h.</summary>
        public void SynchronizeWhiteBases(Spectrum whiteBase) {
            Check("J4_SynchronizeWhitebases", () => library.SynchronizeWhitebases(whiteBase.ToArray()));
        }

        /// <summary>Releases table and instrument and begins anew; events stay.</summary>
        public void Reset() {
            this["Reset"] = "J4TAll";
        }

        /// <summary>An option by its key.</summary>
        /// <exception cref="ArgumentException">A NUL in key or value.</exception>
        public string this[string key] {
            get {
                CheckWhole(key);
                return Run(() => library.Option(key));
            }
            set {
                CheckWhole(key);
                CheckWhole(value);
                bool isReset = key == "Reset" && (value == "All" || value == "J4TAll");
                lock (calls) {
                    if (isReset && depth > 0) {
                        throw new InvalidOperationException("the library can't be reset in a handler");
                    }
                    Check("J4_SetOption", () => library.SetOption(key, value));
                    if (isReset) {
                        Register(onFailure, onDeviceMessage);
                    }
                }
            }
        }

        /// <summary>Speed between places, mm/s.</summary>
        public int MoveSpeed { get { return Number("J4TMoveSpeed"); } set { Write("J4TMoveSpeed", value); } }
        /// <summary>Speed along a row, mm/s.</summary>
        public int ScanSpeed { get { return Number("J4TScanSpeed"); } set { Write("J4TScanSpeed", value); } }
        /// <summary>Pause before a row starts, ms.</summary>
        public int ScanDelay { get { return Number("J4TScanDelay"); } set { Write("J4TScanDelay", value); } }
        /// <summary>Coordinates are those of the visor, not of the sensor.</summary>
        public bool VisorCoordinates {
            get { return Switch("J4TIsVisorCoordinate"); }
            set { Write("J4TIsVisorCoordinate", value); }
        }
        /// <summary>How patches are recognised.</summary>
        public Recognition PatchRecognition {
            get { return (Recognition)Number("J4TRecognitionAlgorithm"); }
            set { Write("J4TRecognitionAlgorithm", (int)value); }
        }
        /// <summary>The motors hold the arm.</summary>
        public bool HoldPosition { get { return Switch("J4THoldPosition"); } set { Write("J4THoldPosition", value); } }
        /// <summary>The foil holds the paper.</summary>
        public bool Foil {
            get { return Switch("J4TEnableElectrostaticFoil"); }
            set { Write("J4TEnableElectrostaticFoil", value); }
        }
        /// <summary>The foil's button works.</summary>
        public bool FoilButton {
            get { return Switch("J4TEnableElectrostaticFoilButton"); }
            set { Write("J4TEnableElectrostaticFoilButton", value); }
        }
        /// <summary>The table works without an instrument in it; set before the first call of the table.</summary>
        public bool UseableWithoutInstrument {
            get { return Switch("J4TUseableWithoutJ4"); }
            set { Write("J4TUseableWithoutJ4", value); }
        }
        /// <summary>Unit of all coordinates.</summary>
        public Unit UserUnit { get { return (Unit)Number("5030"); } set { Write("5030", (int)value); } }
        /// <summary>Limit of the check of the instrument's seat.</summary>
        public float PlacementFactor { get { return Real("5041"); } set { Write("5041", value); } }
        /// <summary>Largest colour difference on the tile.</summary>
        public float DirtLimit { get { return Real("5044"); } set { Write("5044", value); } }
        /// <summary>Colour difference that the last calibration found on the tile.</summary>
        public float DirtDifference { get { return Real("5045"); } }
        /// <summary>A table is connected.</summary>
        public bool Connected { get { return Switch("J4TConnection"); } }
        /// <summary>Serial number of the table.</summary>
        public int SerialNumber { get { return Number("J4TSerialNumber"); } }
        /// <summary>Serial number of the instrument in the table.</summary>
        public string TableInstrument { get { return this["J4TJ4SerialNumber"]; } }
        /// <summary>Firmware of the table's controller.</summary>
        public int FirmwareVersion { get { return Number("J4TFirmwareVersion"); } }
        /// <summary>Highest speed, mm/s.</summary>
        public int MaxSpeed { get { return Number("J4TMaxSpeed"); } }
        /// <summary>When the white base was written.</summary>
        public DateTimeOffset WhiteBaseTime {
            get { return DateTimeOffset.FromUnixTimeSeconds(Number("J4TLastWhiteBaseTransferTime")); }
        }
        /// <summary>Version of the table's library.</summary>
        public string Version { get { return this["J4TVersion"]; } }
        /// <summary>Full path of the instrument's library.</summary>
        public string InstrumentLibrary { get { return this["J4TJ4SDKPath"]; } }
        /// <summary>"SingleReflectance", "ScanningReflectance", or another mode of the instrument.</summary>
        public string MeasurementMode {
            get { return this["MeasurementMode"]; }
            set { this["MeasurementMode"] = value; }
        }
        /// <summary>Modes of the selected instrument, separated by ";".</summary>
        public string MeasurementModes { get { return this["AvailableMeasurementModes"]; } }
        /// <summary>What GetColour gives, for instance "CIELab".</summary>
        public string ColourSpace {
            get { return this["ColorSpaceDescription.Type"]; }
            set { this["ColorSpaceDescription.Type"] = value; }
        }
        /// <summary>Illuminant of colour values.</summary>
        public string Illumination {
            get { return this["Colorimetric.Illumination"]; }
            set { this["Colorimetric.Illumination"] = value; }
        }
        /// <summary>Observer of colour values.</summary>
        public string Observer {
            get { return this["Colorimetric.Observer"]; }
            set { this["Colorimetric.Observer"] = value; }
        }
        /// <summary>The selected instrument, "Sorvane0" and so on.</summary>
        public string Instrument { get { return this["DeviceType"]; } set { this["DeviceType"] = value; } }
        /// <summary>Serial number of the selected instrument.</summary>
        public string InstrumentSerialNumber { get { return this["SerialNumber"]; } }
        /// <summary>Of the current mode, seconds.</summary>
        public float IntegrationTime { get { return Real("IntegrationTime"); } }

        /// <summary>Sends a frame to the table; the line's checksum and carriage return are put behind the bytes.</summary>
        public void WriteRaw(byte[] bytes) {
            IntPtr memory = Marshal.AllocHGlobal(Math.Max(bytes.Length, 1));
            try {
                Marshal.Copy(bytes, 0, memory, bytes.Length);
                var request = new Library.TableRequest {Data = memory, Length = bytes.Length};
                Request(1001, ref request);
            } finally {
                Marshal.FreeHGlobal(memory);
            }
        }

        /// <summary>Reads so many raw bytes, or those that came until the time-out (ms, at most 60000).</summary>
        public byte[] ReadRaw(int count, int timeout) {
            lock (calls) {
                var request = new Library.TableRequest {Length = count, Timeout = (uint)timeout};
                Request(1002, ref request);
                var bytes = new byte[request.Length];
                Marshal.Copy(request.Data, bytes, 0, bytes.Length);
                return bytes;
            }
        }

        /// <summary>Any other operation of J4_Private.</summary>
        public IntPtr Private(int operation, IntPtr record) {
            return Run(() => library.Private(operation, record));
        }

        void Request(int operation, ref Library.TableRequest request) {
            IntPtr record = Marshal.AllocHGlobal(Marshal.SizeOf(typeof(Library.TableRequest)));
            try {
                request.Failed = 1;
                Marshal.StructureToPtr(request, record, false);
                Private(operation, record);
                request = (Library.TableRequest)Marshal.PtrToStructure(record, typeof(Library.TableRequest));
                if (request.Failed != 0) {
                    throw new TableException("J4_Private", (int)Status.Exception, Library.Text(request.ErrorText), "");
                }
            } finally {
                Marshal.FreeHGlobal(record);
            }
        }

        void Register(Library.ErrorHandler failureHandler, Library.DeviceMessageHandler messageHandler) {
            library.RegisterErrorHandler(failureHandler);
            library.RegisterDeviceMessageHandler(messageHandler);
        }

        // Nothing may be thrown through the library's frames: it is kept until the call has returned.
        void KeepFailure(IntPtr function, int status, IntPtr message) {
            try {
                failure = new TableException(Library.Text(function), status, Library.Text(message),
                                             library.Option("ExtendedErrorInformation"));
                Action<TableException> handlers = Failed;
                if (handlers != null) {
                    handlers(failure);
                }
            } catch (Exception thrown) {
                thrownByHandler = ExceptionDispatchInfo.Capture(thrown);
            }
        }

        void PassDeviceMessage(int message, IntPtr text) {
            try {
                Action<int, string> handlers = DeviceMessage;
                if (handlers != null) {
                    handlers(message, Library.Text(text));
                }
            } catch (Exception thrown) {
                thrownByHandler = ExceptionDispatchInfo.Capture(thrown);
            }
        }

        // A call in a handler has a failure of its own: that of the call around it comes back behind it.
        T Run<T>(Func<T> call) {
            lock (calls) {
                if (current != this) {
                    throw new ObjectDisposedException("J4Tavla.Table");
                }
                TableException outer = failure;
                failure = null;
                ++depth;
                try {
                    T result = call();
                    ExceptionDispatchInfo thrown = thrownByHandler;
                    thrownByHandler = null;
                    if (thrown != null) {
                        thrown.Throw();
                    }
                    if (failure != null) {
                        throw failure;
                    }
                    return result;
                } finally {
                    --depth;
                    failure = outer;
                }
            }
        }

        void Check(string function, Library.Action call) {
            lock (calls) {
                int status = Run(() => call());
                if (status != 0) {
                    // One without a call of the handler: there is no instrument's library.
                    throw new TableException(function, status, library.Option("LastError"), "");
                }
            }
        }

        static void CheckWhole(string text) {
            if (text != null && text.IndexOf('\0') >= 0) {
                throw new ArgumentException("a key or value with a NUL in it would be cut there");
            }
        }

        int Number(string key) {
            string text = this[key];
            int value;
            if (!int.TryParse(text, NumberStyles.AllowLeadingSign, CultureInfo.InvariantCulture, out value)) {
                throw NoNumber(key, text);
            }
            return value;
        }

        float Real(string key) {
            string text = this[key];
            float value;
            if (!float.TryParse(text, NumberStyles.Float, CultureInfo.InvariantCulture, out value)) {
                throw NoNumber(key, text);
            }
            return value;
        }

        static TableException NoNumber(string key, string text) {
            return new TableException("J4_GetOption", (int)Status.Exception, key + " is no number: '" + text + "'", "");
        }

        bool Switch(string key) {
            return this[key] == "yes";
        }

        void Write(string key, int value) {
            this[key] = value.ToString(CultureInfo.InvariantCulture);
        }

        // With a point, which tells the library that it is no whole number.
        void Write(string key, float value) {
            this[key] = value.ToString("F9", CultureInfo.InvariantCulture);
        }

        void Write(string key, bool value) {
            this[key] = value ? "yes" : "no";
        }
    }

    /// <summary>The C functions of a library that has been loaded from a file.</summary>
    sealed class Library : IDisposable {
        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        public delegate void ErrorHandler(IntPtr function, int status, IntPtr message);
        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        public delegate void DeviceMessageHandler(int message, IntPtr text);
        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        public delegate int Action();
        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        public delegate int FillSample([Out] float[] values, uint index);
        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        public delegate int FillValue(out float value, uint index);
        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        public delegate int FillDensities([Out] float[] values, ref int further, uint index);
        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        public delegate int TakeSpectrum(float[] values);
        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        public delegate int TakeCount(uint count);
        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        public delegate int FillPosition(out float x, out float y);
        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        public delegate int TakePosition(float x, float y);
        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        public delegate int TakeRow(float startX, float startY, float endX, float endY);
        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        public delegate int TakeTexts(string key, string value);
        // The text belongs to the library: it must not be freed, so it does not come as a string.
        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        public delegate IntPtr TextOf(string key);
        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        public delegate IntPtr TakeErrorHandler(ErrorHandler handler);
        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        public delegate IntPtr TakeDeviceMessageHandler(DeviceMessageHandler handler);
        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        public delegate IntPtr TakeRecord(int operation, IntPtr record);

        /// <summary>Record of the private operations 1001 and 1002.</summary>
        [StructLayout(LayoutKind.Sequential)]
        public struct TableRequest {
            public IntPtr Data;
            public int Length;
            public uint Timeout;
            public uint Unused;
            public byte Failed;
            public IntPtr ErrorText;
        }

        readonly LibraryHandle handle;

        public readonly Action Calibrate;
        public readonly Action TriggerMeasurement;
        public readonly Action GetNumberOfAvailableSamples;
        public readonly FillSample GetSpectrum;
        public readonly FillSample GetTriStimulus;
        public readonly FillValue GetDensity;
        public readonly TakeSpectrum SetSubstrate;
        public readonly TakeTexts SetOption;
        public readonly TextOf GetOption;
        public readonly Action KeyPressed;
        public readonly Action IsConnected;
        public readonly FillDensities GetDensities;
        public readonly TakeCount TriggerCountedScan;
        public readonly TakeErrorHandler RegisterErrorHandler;
        public readonly TakeDeviceMessageHandler RegisterDeviceMessageHandler;
        public readonly FillPosition GetPosition;
        public readonly TakePosition SetPosition;
        public readonly Action GoToHomePosition;
        public readonly TakeRow Scan;
        public readonly Action IsTableConnected;
        public readonly TakeSpectrum SynchronizeWhitebases;
        public readonly TakeRecord Private;

        public Library(string file) {
            handle = LibraryHandle.Load(file);
            Bind("J4_Calibrate", out Calibrate);
            Bind("J4_TriggerMeasurement", out TriggerMeasurement);
            Bind("J4_GetNumberOfAvailableSamples", out GetNumberOfAvailableSamples);
            Bind("J4_GetSpectrum", out GetSpectrum);
            Bind("J4_GetTriStimulus", out GetTriStimulus);
            Bind("J4_GetDensity", out GetDensity);
            Bind("J4_SetSubstrate", out SetSubstrate);
            Bind("J4_SetOption", out SetOption);
            Bind("J4_GetOption", out GetOption);
            Bind("J4_KeyPressed", out KeyPressed);
            Bind("J4_IsConnected", out IsConnected);
            Bind("J4_GetDensities", out GetDensities);
            Bind("J4_TriggerCountedScan", out TriggerCountedScan);
            Bind("J4_RegisterErrorHandler", out RegisterErrorHandler);
            Bind("J4_RegisterDeviceMessageHandler", out RegisterDeviceMessageHandler);
            Bind("J4_GetPosition", out GetPosition);
            Bind("J4_SetPosition", out SetPosition);
            Bind("J4_GoToHomePosition", out GoToHomePosition);
            Bind("J4_Scan", out Scan);
            Bind("J4_IsTableConnected", out IsTableConnected);
            Bind("J4_SynchronizeWhitebases", out SynchronizeWhitebases);
            Bind("J4_Private", out Private);
        }

        public void Dispose() {
            handle.Dispose();
        }

        public string Option(string key) {
            return Text(GetOption(key));
        }

        public static string Text(IntPtr text) {
            return text == IntPtr.Zero ? "" : Marshal.PtrToStringAnsi(text);
        }

        void Bind<T>(string name, out T function) {
            function = (T)(object)Marshal.GetDelegateForFunctionPointer(handle.Find(name), typeof(T));
        }
    }

    /// <summary>A loaded library of the system.</summary>
    sealed class LibraryHandle : SafeHandleZeroOrMinusOneIsInvalid {
        static readonly bool onWindows = Environment.OSVersion.Platform == PlatformID.Win32NT;

        string file;

        LibraryHandle(IntPtr loaded) : base(true) {
            SetHandle(loaded);
        }

        public static LibraryHandle Load(string file) {
            if (file == null) {
                file = onWindows ? "j4tavla64.dll" : "libj4tavla64.so";
                string beside = Path.Combine(AppContext.BaseDirectory, file);
                if (File.Exists(beside)) {
                    file = beside;
                }
            }
            // A full path brings the folder in which the library's own libraries lie.
            IntPtr loaded = onWindows ? LoadLibraryExW(file, IntPtr.Zero, Path.IsPathRooted(file) ? 8u : 0u)
                                      : dlopen(file, 2);
            if (loaded == IntPtr.Zero) {
                throw new DllNotFoundException(onWindows ? file + ": " + new Win32Exception().Message
                                                         : Library.Text(dlerror()));
            }
            return new LibraryHandle(loaded) {file = file};
        }

        public IntPtr Find(string name) {
            IntPtr found = onWindows ? GetProcAddress(handle, name) : dlsym(handle, name);
            if (found == IntPtr.Zero) {
                throw new EntryPointNotFoundException(file + " has no " + name);
            }
            return found;
        }

        protected override bool ReleaseHandle() {
            return onWindows ? FreeLibrary(handle) : dlclose(handle) == 0;
        }

        [DllImport("kernel32", CharSet = CharSet.Unicode, ExactSpelling = true, SetLastError = true)]
        static extern IntPtr LoadLibraryExW(string file, IntPtr reserved, uint flags);
        [DllImport("kernel32", CharSet = CharSet.Ansi, ExactSpelling = true)]
        static extern IntPtr GetProcAddress(IntPtr library, string name);
        [DllImport("kernel32")]
        static extern bool FreeLibrary(IntPtr library);
        [DllImport("libdl.so.2")]
        static extern IntPtr dlopen(string file, int flags);
        [DllImport("libdl.so.2")]
        static extern IntPtr dlsym(IntPtr library, string name);
        [DllImport("libdl.so.2")]
        static extern IntPtr dlerror();
        [DllImport("libdl.so.2")]
        static extern int dlclose(IntPtr library);
    }
}
