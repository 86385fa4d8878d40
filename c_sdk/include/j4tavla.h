/* clang-format off: the tables are wider than the code */
/**
 * @file j4tavla.h
 * The programming interface of the J4 Tavla scanning table: 22 C functions that measure with the
 * spectrophotometer, move the table that carries it, and scan rows of patches.
 *
 * By task: @ref j4t_failures, @ref j4t_options, @ref j4t_prepare, @ref j4t_move, @ref j4t_measure, @ref j4t_scan,
 * @ref j4t_results, @ref j4t_service.
 *
 * Sixteen of the functions are the measuring interface of the instrument's own library
 * (`sorvane64.dll`), so a program written for that library can load this one in its place. The
 * library finds and loads `sorvane64.dll` (on Linux `libsorvane64.so`) at the first call.
 *
 * For C++17 there is j4tavla.hpp on top of this header, for C# the source J4Tavla.cs, for Python the package j4tavla.
 *
 * ### Rules for all functions
 *
 *  - No function has to be called before another. The first call loads the instrument's library; the
 *    first call that needs the table connects to it. There is nothing to open and nothing to close: a process
 *    has one table and one instrument, which options choose.
 *  - **Threads**: any thread may call, but one at a time; the application keeps a lock, or one thread for the table.
 *    Nothing in the library is locked, and it starts no thread. Every call blocks until instrument and table are done.
 *    A debug build ends the process when two threads are in the library at once.
 *  - **Handlers** run inside the call that is under way; what they may do stands at ::J4_ErrorHandler and
 *    ::J4_DeviceMessageHandler. What a C++ handler throws leaves the function that was called; let nothing leave.
 *  - **Texts** are NUL-terminated 8-bit strings, which no encoding is put on. Those that an application gives are copied
 *    at once. Those that it gets belong to the library and are never freed by the application; they are valid
 *     - from ::J4_GetOption: until the next call of ::J4_GetOption, whatever its key, also in a handler,
 *     - in a handler: until the handler returns,
 *     - in a ::J4PrivateTableRequest: the bytes until the next read, the text of a failure until the next operation.
 *  - A function that returns a ::J4_Result returns 0 for success. The text of a failure is given to the
 *    registered ::J4_ErrorHandler and can be read with the options "LastError" and
 *    "ExtendedErrorInformation" until the next call of any other kind.
 *  - Nothing is written through an output pointer by a call of this library that failed before it
 *    reached the instrument. What the instrument's own library wrote before it reported a failure stays.
 *  - When this library is unloaded, or the process ends, it releases the table, but does not call the
 *    instrument's library, which may be gone by then: the two handlers that it registered there stay. An
 *    application that has loaded the instrument's library itself, so that it remains, registers handlers of
 *    its own there (null ones will do) before it unloads this library.
 *
 * ### Units
 *
 * | value | unit |
 * |-------|------|
 * | coordinates | millimetres (property 5030 chooses another unit), as `float`; the origin is the axis of the table's tower, and the table knows tenths of a millimetre |
 * | speeds, delays | mm/s, ms |
 * | spectrum | 36 values, 380 to 730 nm in steps of 10 nm (::J4_SPECTRUM_LENGTH, ::J4_FIRST_WAVELENGTH, ::J4_WAVELENGTH_STEP) |
 * | reflectance | a factor: 1 for the perfect diffuser, 0 for black; noise takes black a little below 0 |
 * | density | decimal logarithm, without a unit |
 *
 * ### Measurement modes and results
 *
 * The mode and what is made of a spectrum are options of the instrument's library, written and read with ::J4_SetOption
 * and ::J4_GetOption. Which values it has, it tells itself (`AvailableMeasurementModes`) or its documents do; of those
 * below, this library uses `SingleReflectance`, `ScanningReflectance`, `CIELab`, `D50` and `TwoDegree` itself, and the
 * virtual table's instruments have them all.
 *
 * | key | values | meaning |
 * |-----|--------|---------|
 * | `MeasurementMode` | `SingleReflectance` | reflectance of the place under the instrument, one sample, by ::J4_TriggerMeasurement |
 * | | `ScanningReflectance` | reflectance along a way, by ::J4_Scan: one sample for each patch, or all samples in their order where recognition is off |
 * | | `SingleEmission` | light of what shines by itself; no counted scans. The table corrects the two reflectance modes alone |
 * | `AvailableMeasurementModes` | read only | the modes of the selected instrument, separated by `;` |
 * | `DeviceType` | `Sorvane0`, `Sorvane1`, ... | the selected instrument; connecting a table selects the one in it |
 * | `SerialNumber` | read only | of the selected instrument |
 * | `IntegrationTime` | read only | in the current mode, seconds; the time that one sample of a scan takes |
 * | `ColorSpaceDescription.Type` | `CIELab`, `CIELCh`, `CIEXYZ`, `CIExyY` | what ::J4_GetTriStimulus gives: L*, a*, b*; L*, C*, h in degrees; X, Y, Z with 100 for the perfect diffuser's Y; x, y, Y |
 * | `Colorimetric.Illumination` | `D50` | illuminant of the colour values |
 * | `Colorimetric.Observer` | `TwoDegree` | observer of the colour values |
 *
 * A calibration belongs to its mode; ::J4_Calibrate on the table does both reflectance modes in one call and leaves
 * `MeasurementMode` as it was. Samples are counted from 0 and stay until the next measurement, scan, calibration on the
 * table, or option "Reset".
 *
 * ### Options
 *
 * Option keys of the table, for ::J4_SetOption and ::J4_GetOption (keys are case sensitive; a key that
 * is not in this list goes on to the instrument's library unchanged, in both directions):
 *
 * | key                                | type   | access | meaning |
 * |------------------------------------|--------|--------|---------|
 * | "J4TMoveSpeed"                     | long   | rw     | speed of ::J4_SetPosition and of the way to a row's start, mm/s; default 300. Of this and of the next two the table is told the lower 16 bits, which alone are checked: 65836 moves with 300 |
 * | "J4TScanSpeed"                     | long   | rw     | speed along a row, mm/s; default 160 |
 * | "J4TScanDelay"                     | long   | rw     | pause of the table before a row starts, ms; default 200 |
 * | "J4TIsVisorCoordinate"             | yes/no | rw     | coordinates are those of the visor instead of the sensor; default no |
 * | "J4TRecognitionAlgorithm"          | long   | rw     | 0 no patch recognition, 1 by samples alone, 2 by samples and positions; default 2 |
 * | "Recognition"                      | yes/no | rw     | the instrument's own key, "no" at first. Writing the key above and each ::J4_Scan set it; written while a table is connected, "no" sets the key above to 0, and "yes" sets it from 0 to 2 |
 * | "J4THoldPosition"                  | yes/no | rw     | the motors hold the arm in place |
 * | "J4TEnableElectrostaticFoil"       | yes/no | rw     | the foil holds the paper |
 * | "J4TEnableElectrostaticFoilButton" | yes/no | rw     | the foil's button on the table works |
 * | "J4TEnableWhitebaseCorrection"     | yes/no | w      | "no" and "0" remove the correction to the table's white base in the current mode, anything else installs it anew |
 * | "J4TUseableWithoutJ4"              | yes/no | rw     | the table works without an instrument in it; default no |
 * | "J4TDeviceType"                    | text   | rw     | written "J4TSorvaneTable" and 1 to 127: connect to that table. Reads "J4TSorvaneTable" and the table's index minus 1 |
 * | "J4TConnection"                    | yes/no | r      | a table is connected |
 * | "J4TJ4SerialNumber"                | text   | r      | serial number of the instrument in the table |
 * | "J4TSerialNumber"                  | long   | r      | serial number of the table |
 * | "J4TFirmwareVersion"               | long   | r      | firmware of the table's controller |
 * | "J4TMaxSpeed"                      | long   | r      | highest speed, mm/s |
 * | "J4TLastWhiteBaseTransferTime"     | long   | r      | when the white base was written, seconds since 1970-01-01 UTC |
 * | "J4TFlash_" and a decimal number   | any    | r      | a value of the table's configuration block |
 * | "J4TMetricAbsHomeMovements"        | long   | r      | lifetime counter of the table: reference runs |
 * | "J4TMetricAbsMovements"            | long   | r      | lifetime counter: movements |
 * | "J4TMetricAbsDistance"             | long   | r      | lifetime counter: distance |
 * | "J4TMetricResets"                  | long   | r      | lifetime counter: resets |
 * | "J4TMetricRelHomeMovements"        | long   | r      | counter since the last service: reference runs |
 * | "J4TMetricRelMovements"            | long   | r      | counter since the last service: movements |
 * | "J4TMetricRelDistance"             | long   | r      | counter since the last service: distance |
 * | "J4TVersion"                       | text   | r      | "Version 1.1.4  Build 104" |
 * | "J4TMajorVersion", "J4TMinorVersion", "J4TRevisionVersion", "J4TBuildVersion" | text | r | the parts of the version |
 * | "J4TJ4SDKPath"                     | text   | r      | full path of the instrument's library |
 * | "J4TSerialPortLogFile"             | text   | rw     | kept and read back; "yes" and "1" read back "FTDI", "no" and "0" nothing |
 * | "J4TWriteToSerialLogFile"          | text   | w      | a line for the log of the table's serial traffic |
 * | "LastError"                        | text   | r      | message of the last failed call, "no error" after a good one |
 * | "ExtendedErrorInformation"         | text   | r      | the same with the type of the error and the trace through the library |
 * | "Reset"                            | text   | w      | "All" or "J4TAll": release table and instrument and load the instrument's library anew. The error handler has to be registered again |
 * | "Please throw an exception in the j4tavla SDK" | - | r   | always fails with status 9, to test an error path |
 * | "5000" to "5999"                   | any    | rw     | raw access to the table's numbered properties; lists are separated by blanks. Digits that make 65536 or more are no key: status 9 |
 *
 * Boolean keys read "yes" or "no"; when written, "yes" and "1" mean yes and any other text means no, but for
 * "J4TEnableWhitebaseCorrection", as told there.
 *
 * Numbered properties worth knowing, for the numeric keys. The text that is written gives the value its type: **a float
 * needs a point** ("2.0"), a long must not have one. Writing the wrong type succeeds, and the call that uses it fails with
 * status 9, as ::J4_Calibrate does after "2" for "5044":
 *
 * | key            | type   | access | meaning |
 * |----------------|--------|--------|---------|
 * | "5030"         | long   | rw     | the user's unit: 0 millimetre (default), 1 tenth of a millimetre, 2 inch |
 * | "5040"         | long   | rw     | not 0: ::J4_Calibrate checks that the instrument sits tight; default 1 |
 * | "5041"         | float  | rw     | largest factor between present and known integration time there; default 1.15 |
 * | "5042"         | long   | rw     | not 0: ::J4_Calibrate checks that the tile is clean; default 1 |
 * | "5043"         | long   | rw     | way in y between the two measurements there, tenths of a millimetre; default -5 |
 * | "5044"         | float  | rw     | largest colour difference there (CIE 1976); default 0.2 |
 * | "5045"         | float  | r      | colour difference of the last check; known only after one |
 * | "5050"         | long   | rw     | 0: targets are not checked before they are sent; default 1 |
 * | "5202", "5203" | long   | r      | the other two numbers of the firmware |
 * | "5210" to "5215" | long | r      | deviations of the controller |
 * | "5218", "5219" | long   | r      | state of the controller |
 */
/* clang-format on */
#ifndef J4TAVLA_H
#define J4TAVLA_H

#include <stdint.h>

#if defined(_WIN32)
#define J4T_API
#else
#define J4T_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Number of values in a spectrum. */
#define J4_SPECTRUM_LENGTH 36
/** Wavelength of the first value of a spectrum, nm. */
#define J4_FIRST_WAVELENGTH 380
/** From the wavelength of one value of a spectrum to that of the next, nm; the last is 730 nm. */
#define J4_WAVELENGTH_STEP 10

/**
 * @defgroup j4t_failures Statuses and failures
 * How a call tells that it failed: by its status, by the registered handler, and by two options.
 *
 * @code
 * static void OnFailure(const char* functionName, int32_t status, const char* message)
 * {
 *     fprintf(stderr, "%s: status %d: %s\n", functionName, (int)status, message);
 *     fprintf(stderr, "%s\n", J4_GetOption("ExtendedErrorInformation"));
 * }
 *
 * static int Begin(void)
 * {
 *     J4_RegisterErrorHandler(OnFailure);
 *     return J4_IsTableConnected() == J4_ResultNoError;
 * }
 * @endcode
 *
 * Which statuses a function can give stands with it, in these words:
 *
 * | words | statuses |
 * |-------|----------|
 * | of the instrument | whatever its library gives; 9 when memory is missing, that library throws an exception, or a text of it is longer than 1 MiB; 104 |
 * | of the table | those of the instrument; 1, 2 and 9 for what happens on the line to the table and in its configuration block; 10 when the instrument's white reference is unusable; 100 without an instrument in the table; 103 when the table's white base is unusable. Every function that needs the table can give them, since it may have to connect |
 *
 * 104 means that the instrument's library can't be loaded, or that memory is missing before there is anything that could
 * keep a status: no handler is called then, and ::J4_GetOption gives the text of the failure as the value of every
 * key. A function whose call needed the instrument's library after it had become unusable returns 0 without having
 * done anything; ::J4_GetOption gives the text then too.
 * @{
 */

/** Status of a call. Codes of the instrument's library are passed on unchanged, so any value can come. */
typedef int32_t J4_Result;

/** The statuses that this library itself gives. */
enum J4_ResultCode {
    J4_ResultNoError = 0,                         /**< success */
    J4_ResultDeviceFault = 1,                     /**< the table answered late, wrongly or with an error */
    J4_ResultDeviceNotConnected = 2,              /**< no table, or the channel to it failed */
    J4_ResultNotCalibrated = 3,                   /**< the calibration failed its checks */
    J4_ResultException = 9,                       /**< any other failure; see the text */
    J4_ResultResourceFault = 10,                  /**< an argument or a value was refused */
    J4_ResultSpectrophotometerNotConnected = 100, /**< no connected instrument sits in the table */
    J4_ResultPositionNotReached = 101,            /**< the arm did not reach its target */
    J4_ResultIllegalPosition = 102,               /**< the target lies outside the work area */
    J4_ResultWhiteBase = 103,                     /**< the white base is not usable */
    J4_ResultFrameFailure = 104                   /**< the instrument's library can't be loaded */
};

/**
 * Receives every failure, on the caller's thread, before the failed function returns.
 *
 * It may call ::J4_GetOption for "LastError" and "ExtendedErrorInformation", which leaves the failure as it is.
 * Every other function may be called too, but is a call like any other: its outcome replaces the stored failure,
 * and with it the status that the failed function returns, and if it fails the handler is called again, inside
 * itself. Only the option "Reset" must not be written with "All" or "J4TAll". All calls of ::J4_GetOption share one
 * text: where it is ::J4_GetOption that failed, it returns what was read last in the handler.
 * @param functionName  name of the function that failed, for instance "J4_Scan"
 * @param status        the status that the function returns, unless the handler calls others
 * @param message       what failed; valid until the handler returns
 */
typedef void (*J4_ErrorHandler)(const char* functionName, int32_t status, const char* message);

/**
 * Receives the instrument's device messages, while a call of the instrument's library is under way and on the thread
 * that this library uses; the virtual one uses the caller's.
 *
 * It calls no function of this library, since it stands in the midst of another call: remember the message, and act
 * when that call has returned. After message 1 the next call that needs the table connects to it anew by itself, where
 * it was the table's instrument that has gone.
 * @param message  number of the message; 1: the instrument named in text has gone
 * @param text     what the message is about, for instance a serial number, as the instrument's library gives it; it may
 *                 be null, and is valid until the handler returns
 */
typedef void (*J4_DeviceMessageHandler)(int32_t message, const char* text);

/**
 * Registers the receiver of failures. There is one for the process; the option "Reset" with "All" or "J4TAll" forgets
 * it.
 * @param handler  may be null: none
 * @return the handler registered before; null when there was none or the call failed
 */
J4T_API J4_ErrorHandler J4_RegisterErrorHandler(J4_ErrorHandler handler);

/**
 * Registers the receiver of device messages. There is one for the process; register it again after the option "Reset"
 * with "All" or "J4TAll".
 * @param handler  may be null: none
 * @return the handler registered before; null when there was none or the call failed
 */
J4T_API J4_DeviceMessageHandler J4_RegisterDeviceMessageHandler(J4_DeviceMessageHandler handler);

/** @} */

/**
 * @defgroup j4t_options Options
 * The only settings interface: key and value are texts. The keys are listed at the top of this file.
 *
 * @code
 * static int SlowRows(void)
 * {
 *     // Before the next call, which has the same text: print it, or copy it.
 *     printf("table %s, ", J4_GetOption("J4TSerialNumber"));
 *     printf("at most %s mm/s\n", J4_GetOption("J4TMaxSpeed"));
 *     return J4_SetOption("J4TScanSpeed", "80") == J4_ResultNoError;
 * }
 * @endcode
 * @{
 */

/**
 * Writes an option.
 * @param key    not null, not empty
 * @param value  not null, not empty
 * @return 0; 10 for a refused key or value; 9 for a value that should be a number and is none; of the instrument; of the
 *         table for keys of the table. The option is unchanged after a failure, with these
 *         exceptions: "J4TRecognitionAlgorithm" and "Recognition" have changed the table's side when the
 *         instrument's library refuses its own, "J4TEnableWhitebaseCorrection" leaves no correction, and
 *         "J4TDeviceType" leaves no table, so that the next call connects to the first one.
 */
J4T_API J4_Result J4_SetOption(const char* key, const char* value);

/**
 * Reads an option.
 * @param key  not null, not empty; not the text that an earlier call gave
 * @return the value, never null, empty after a failure. Its status, the same as those of ::J4_SetOption, goes to the
 *         error handler alone. The text is valid until the next call of this function.
 */
J4T_API const char* J4_GetOption(const char* key);

/** @} */

/**
 * @defgroup j4t_prepare Connecting and calibrating
 * Table and instrument are found by themselves; these calls ask for them and make them ready.
 *
 * @code
 * static int Prepare(void)
 * {
 *     return J4_IsTableConnected() == J4_ResultNoError && // connects, and says why not
 *            J4_GoToHomePosition() == J4_ResultNoError && // the white tile
 *            J4_Calibrate() == J4_ResultNoError;
 * }
 * @endcode
 * @{
 */

/**
 * Connects to the table where that has not been done. Of a connected one it asks the USB device alone: one that is
 * plugged in and answers no command any more is connected, which the next move shows.
 * @return 0 when a table is connected; 2 when there is none, which also reaches the error handler (of a table that has
 *         been unplugged with the last text of the instrument's library, which is about something else); of the table
 */
J4T_API J4_Result J4_IsTableConnected(void);

/** @return 0 when the selected instrument is connected; of the instrument */
J4T_API J4_Result J4_IsConnected(void);

/**
 * Calibrates on the white tile. With the table's instrument selected, in one of the reflectance modes, both of these are
 * calibrated and checked, so call J4_GoToHomePosition() first; in another mode that one alone is calibrated. The status
 * that the instrument's library itself gives for a calibration is not looked at there. An instrument that is not the
 * table's is calibrated alone, in its current mode, and its status is returned.
 * @return 0; 3 when the instrument is not placed properly or the tile is dirty; of the table; of the instrument; and,
 *         since the check of the tile moves the arm, those of J4_SetPosition(). After a failed check the arm is back at
 *         the tile and all options are as before.
 */
J4T_API J4_Result J4_Calibrate(void);

/** @return state of the instrument's button as its library gives it; 2 when the call failed */
J4T_API int32_t J4_KeyPressed(void);

/** @} */

/**
 * @defgroup j4t_move Moving the arm
 * Coordinates are those of the sensor, or of the visor with the option "J4TIsVisorCoordinate".
 *
 * @code
 * static int NextPlace(void)
 * {
 *     float x = 0.0f;
 *     float y = 0.0f;
 *     if (J4_GetPosition(&x, &y) != J4_ResultNoError) {
 *         return 0;
 *     }
 *     return J4_SetPosition(x + 12.5f, y) == J4_ResultNoError;
 * }
 * @endcode
 * @{
 */

/**
 * Reads the arm's position.
 * @param x  receives the place in the user's unit, millimetres by default (property 5030:
 *           0 millimetre, 1 tenth of a millimetre, 2 inch). Written only after success.
 * @param y  as x
 * @return 0; 10 for a null pointer or a unit that is none; of the table
 */
J4T_API J4_Result J4_GetPosition(float* x, float* y);

/**
 * Moves the arm and waits for its arrival. A target within 0.05 mm of the origin on both axes means
 * J4_GoToHomePosition().
 * @param x  target in the user's unit
 * @param y  as x
 * @return 0; 102 for a target outside the work area, before anything moves; 101 when the arm did not arrive; 10 for a
 *         speed ("J4TMoveSpeed") that the table does not have or a unit that is none; of the table
 */
J4T_API J4_Result J4_SetPosition(float x, float y);

/**
 * Moves the arm to the white tile, by the motors' reference run.
 * @return 0; 1 when the tile's place was not found; of the table
 */
J4T_API J4_Result J4_GoToHomePosition(void);

/** @} */

/**
 * @defgroup j4t_measure Measuring at a place
 * One measurement where the instrument stands, in the table or in the hand.
 *
 * @code
 * static int MeasureAt(float x, float y, float spectrum[J4_SPECTRUM_LENGTH])
 * {
 *     return J4_SetOption("MeasurementMode", "SingleReflectance") == J4_ResultNoError &&
 *            J4_SetPosition(x, y) == J4_ResultNoError && J4_TriggerMeasurement() == J4_ResultNoError &&
 *            J4_GetSpectrum(spectrum, 0) == J4_ResultNoError;
 * }
 * @endcode
 * @{
 */

/** Takes one measurement in the current measurement mode; its result is sample 0. @return 0; of the instrument */
J4T_API J4_Result J4_TriggerMeasurement(void);

/**
 * Takes samples at the instrument's own pace and returns when they are taken. The table does not move: J4_Scan() does
 * both.
 *
 * With the option "Recognition" at "yes", which every J4_Scan() leaves unless "J4TRecognitionAlgorithm" is 0, the
 * instrument looks for patches in them, and those it finds are what is left: of one place, none. Write "no" before this
 * call, and "yes" or the algorithm before the next row.
 * @param count  number of samples
 * @return 0; of the instrument
 */
J4T_API J4_Result J4_TriggerCountedScan(uint32_t count);

/** @} */

/**
 * @defgroup j4t_scan Scanning a row
 * The instrument is carried along a row of patches while it measures. A row begins and ends on bare paper.
 *
 * @code
 * static int ScanRow(float fromX, float toX, float y)
 * {
 *     if (J4_SetOption("MeasurementMode", "ScanningReflectance") != J4_ResultNoError ||
 *         J4_Scan(fromX, y, toX, y) != J4_ResultNoError) {
 *         return -1;
 *     }
 *     return (int)J4_GetNumberOfAvailableSamples(); // one for each patch
 * }
 * @endcode
 * @{
 */

/**
 * Carries the instrument along a row of patches while it measures, in the current measurement mode; the samples are read
 * afterwards with J4_GetNumberOfAvailableSamples() and J4_GetSpectrum(). The option "J4TRecognitionAlgorithm" says what
 * a sample is: a patch, or with 0 what the instrument saw in one integration time.
 * @param startX  first point of the row, in the user's unit
 * @param startY  as startX
 * @param endX    last point of the row
 * @param endY    as endX
 * @return 0; 9 for an instrument that is not calibrated in this mode; 102 for a point outside the work area, and 10 for
 *         a speed ("J4TMoveSpeed", "J4TScanSpeed") that the table does not have, a recognition or a unit that is none;
 *         101 when the arm did not arrive; of the table; of the instrument. A failure before the arm sets out along the
 *         row leaves the samples of before, also 101 on the way to its start. When the measurement along it fails, no
 *         sample is left and the table stands at the row's end. When only the end of the motion fails, the row's samples are
 *         there.
 */
J4T_API J4_Result J4_Scan(float startX, float startY, float endX, float endY);

/** @} */

/**
 * @defgroup j4t_results Reading results
 * What the last measurement or scan gave, sample by sample.
 *
 * @code
 * static int PrintSamples(void)
 * {
 *     const int32_t count = J4_GetNumberOfAvailableSamples();
 *     for (int32_t i = 0; i < count; ++i) {
 *         float spectrum[J4_SPECTRUM_LENGTH];
 *         float lab[3]; // as ColorSpaceDescription.Type says
 *         if (J4_GetSpectrum(spectrum, (uint32_t)i) != 0 || J4_GetTriStimulus(lab, (uint32_t)i) != 0) {
 *             return 0;
 *         }
 *         for (int band = 0; band < J4_SPECTRUM_LENGTH; ++band) {
 *             printf("%d nm: %.4f\n", J4_FIRST_WAVELENGTH + band * J4_WAVELENGTH_STEP, (double)spectrum[band]);
 *         }
 *         printf("L* %.2f a* %.2f b* %.2f\n", (double)lab[0], (double)lab[1], (double)lab[2]);
 *     }
 *     return 1;
 * }
 * @endcode
 * @{
 */

/** @return number of samples that can be read, 0 or less for none; -1 when the call failed */
J4T_API int32_t J4_GetNumberOfAvailableSamples(void);

/**
 * Reads the spectrum of a sample.
 * @param spectrum  36 values are written: reflectance factors at 380, 390, ... 730 nm
 * @param index     sample, counted from 0
 * @return 0; 10 for a null pointer; of the instrument, for instance when there is no such sample
 */
J4T_API J4_Result J4_GetSpectrum(float* spectrum, uint32_t index);

/**
 * Reads a sample as colour values in the colour space that the instrument's options select.
 * @param tristimulus  3 values are written, in the order of the colour space's name
 * @param index        sample, counted from 0
 * @return 0; 10 for a null pointer; of the instrument
 */
J4T_API J4_Result J4_GetTriStimulus(float* tristimulus, uint32_t index);

/**
 * Reads one density value of a sample; of the virtual table's instruments the highest of the four that
 * J4_GetDensities() gives.
 * @param density  1 value is written
 * @param index    sample, counted from 0
 * @return 0; 10 for a null pointer; of the instrument
 */
J4T_API J4_Result J4_GetDensity(float* density, uint32_t index);

/**
 * Reads the densities of a sample. Values and order are those of the instrument's library, which this one hands on; the
 * order told here is that of the virtual table's instruments.
 * @param densities     4 values are written: cyan, magenta, yellow, black
 * @param densityIndex  one more value of the instrument's library, of the virtual one the place of the highest density;
 *                      handed on to it as it is
 * @param index         sample, counted from 0
 * @return 0; 10 when densities is null; of the instrument
 */
J4T_API J4_Result J4_GetDensities(float* densities, int32_t* densityIndex, uint32_t index);

/**
 * Gives the instrument the spectrum of the substrate that results refer to: of the virtual table's instruments the
 * densities.
 * @param substrateSpectrum  the values, 36 reflectance factors for the virtual table's instruments; the instrument's
 *                           library knows how many it reads
 * @return 0; 10 for a null pointer; of the instrument
 */
J4T_API J4_Result J4_SetSubstrate(float* substrateSpectrum);

/** @} */

/**
 * @defgroup j4t_service White base and raw access
 * For service programs.
 *
 * @code
 * static int Send(char* bytes, int32_t count)
 * {
 *     J4PrivateTableRequest request = {0};
 *     request.data = bytes;
 *     request.length = count;
 *     request.failed = 1; // stays so where the call doesn't come that far
 *     J4_Private(1001, &request);
 *     if (request.failed != 0 && request.errorText != NULL) {
 *         fprintf(stderr, "%s\n", request.errorText);
 *     }
 *     return request.failed == 0;
 * }
 * @endcode
 * @{
 */

/**
 * Writes a new white base, the reflectance of the white tile, to the table's flash, and sets the table
 * up anew. The arm must be homed and the instrument calibrated again afterwards.
 * @param whiteBase  36 values, none of them 0; not tested for null
 * @return 0; 103 when a value is 0, before anything is written; of the table. When power or cable goes while it writes,
 *         the table has no configuration any more: `j4tavla rescue` brings back what the tool has saved.
 */
J4T_API J4_Result J4_SynchronizeWhitebases(float* whiteBase);

/**
 * Record of the ::J4_Private operations 1001 and 1002, the raw access to the table's serial line.
 * The layout is fixed: 32 bytes, offsets 0, 8, 12, 20, 24.
 */
typedef struct J4PrivateTableRequest {
    char* data;       /**< 1001: the bytes to send. 1002: set to the bytes read, valid until the next read */
    int32_t length;   /**< number of bytes at data; for 1002 first the number of bytes wanted */
    uint32_t timeout; /**< 1002: time-out in milliseconds, at most 60000 */
    uint32_t unused;  /**< not used */
    char failed;      /**< set to 0 after success, to 1 after a failure */
    char* errorText;  /**< set to a static text of at most 511 characters: what failed, or empty */
} J4PrivateTableRequest;

/**
 * Operations for service programs. 1001 sends bytes to the table as one frame, the line's checksum and carriage return
 * put behind them, and 1002 reads raw bytes, both with a ::J4PrivateTableRequest; other operations from 1000 to 1999 do nothing; all others go to the
 * instrument's library.
 * @param operation  what to do
 * @param record     what the operation reads and writes
 * @return the value of the instrument's library; 0 for 1000 to 1999 and after a failure. A null record for
 *         1001 or 1002 is refused like any null argument, with status 10 for the error handler; every other failure of
 *         theirs shows in the record.
 */
J4T_API intptr_t J4_Private(int32_t operation, void* record);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
