/* clang-format off: the tables of keys are wider than the code */
/**
 * @file j4tavla.h
 * The programming interface of the J4 Tavla scanning table: 22 C functions that measure with the
 * spectrophotometer, move the table that carries it, and scan rows of patches.
 *
 * Sixteen of the functions are the measuring interface of the instrument's own library
 * (`sorvane64.dll`), so a program written for that library can load this one in its place. The
 * library finds and loads `sorvane64.dll` (on Linux `libsorvane64.so`) at the first call.
 *
 * Rules that hold for all functions:
 *  - No function has to be called before another. The first call loads the instrument's library; the
 *    first call that needs the table connects to it.
 *  - Call from one thread at a time. Every call blocks until instrument and table are done.
 *  - Texts are NUL-terminated 8-bit strings and are copied at once.
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
 * Option keys of the table, for ::J4_SetOption and ::J4_GetOption (keys are case sensitive; a key that
 * is not in this list goes on to the instrument's library unchanged, in both directions):
 *
 * | key                                | type   | access | meaning |
 * |------------------------------------|--------|--------|---------|
 * | "J4TMoveSpeed"                     | long   | rw     | speed of ::J4_SetPosition and of the way to a row's start, mm/s; default 300 |
 * | "J4TScanSpeed"                     | long   | rw     | speed along a row, mm/s; default 160 |
 * | "J4TScanDelay"                     | long   | rw     | pause of the table before a row starts, ms; default 200 |
 * | "J4TIsVisorCoordinate"             | yes/no | rw     | coordinates are those of the visor instead of the sensor; default no |
 * | "J4TRecognitionAlgorithm"          | long   | rw     | 0 no patch recognition, 1 by samples alone, 2 by samples and positions; default 2 |
 * | "Recognition"                      | yes/no | rw     | the instrument's own key; kept in step with the key above |
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
 * Numbered properties worth knowing, for the numeric keys:
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

/** Number of values in a spectrum. */
#define J4_SPECTRUM_LENGTH 36

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
 * Receives the instrument's device messages.
 * @param message  number of the message; 1: the instrument named in text has gone
 * @param text     what the message is about, for instance a serial number
 */
typedef void (*J4_DeviceMessageHandler)(int32_t message, const char* text);

/**
 * Record of the ::J4_Private operations 1001 and 1002, the raw access to the table's serial line.
 * The layout is fixed: 32 bytes, offsets 0, 8, 12, 20, 24.
 */
typedef struct J4PrivateTableRequest {
    char* data;       /**< 1001: the bytes to write. 1002: set to the bytes read, valid until the next read */
    int32_t length;   /**< number of bytes at data; for 1002 first the number of bytes wanted */
    uint32_t timeout; /**< 1002: time-out in milliseconds, at most 60000 */
    uint32_t unused;  /**< not used */
    char failed;      /**< set to 0 after success, to 1 after a failure */
    char* errorText;  /**< set to a static text of at most 511 characters: what failed, or empty */
} J4PrivateTableRequest;

/**
 * Calibrates on the white tile. With the table's instrument selected both reflectance modes are
 * calibrated and checked, so call J4_GoToHomePosition() first; any other instrument is calibrated alone.
 * @return 0; 3 when the instrument is not placed properly or the tile is dirty; a status of table or
 *         instrument. After a failed check the arm is back at the tile and all options are as before.
 */
J4T_API J4_Result J4_Calibrate(void);

/** Takes one measurement in the current measurement mode; its result is sample 0. @return status */
J4T_API J4_Result J4_TriggerMeasurement(void);

/** @return number of samples that can be read, 0 or less for none; -1 when the call failed */
J4T_API int32_t J4_GetNumberOfAvailableSamples(void);

/**
 * Reads the spectrum of a sample.
 * @param spectrum  36 values are written; the wavelengths are the instrument's
 * @param index     sample, counted from 0
 * @return status; 10 for a null pointer
 */
J4T_API J4_Result J4_GetSpectrum(float* spectrum, uint32_t index);

/**
 * Reads a sample as colour values in the colour space that the instrument's options select.
 * @param tristimulus  3 values are written
 * @param index        sample, counted from 0
 * @return status; 10 for a null pointer
 */
J4T_API J4_Result J4_GetTriStimulus(float* tristimulus, uint32_t index);

/**
 * Reads one density value of a sample.
 * @param density  1 value is written
 * @param index    sample, counted from 0
 * @return status; 10 for a null pointer
 */
J4T_API J4_Result J4_GetDensity(float* density, uint32_t index);

/**
 * Gives the instrument the spectrum of the substrate that results refer to.
 * @param substrateSpectrum  the values; the instrument's library knows how many it reads
 * @return status; 10 for a null pointer
 */
J4T_API J4_Result J4_SetSubstrate(float* substrateSpectrum);

/**
 * Writes an option; the keys are listed at the top of this file.
 * @param key    not null, not empty
 * @param value  not null, not empty
 * @return status; 10 for a refused key or value. The option is unchanged after a failure, with these
 *         exceptions: "J4TRecognitionAlgorithm" and "Recognition" have changed the table's side when the
 *         instrument's library refuses its own, "J4TEnableWhitebaseCorrection" leaves no correction, and
 *         "J4TDeviceType" leaves no table, so that the next call connects to the first one.
 */
J4T_API J4_Result J4_SetOption(const char* key, const char* value);

/**
 * Reads an option; the keys are listed at the top of this file.
 * @param key  not null, not empty; not the text that an earlier call gave
 * @return the value, never null, empty after a failure (its status goes to the error handler). The text
 *         is valid until the next call of this function.
 */
J4T_API const char* J4_GetOption(const char* key);

/** @return state of the instrument's button as its library gives it; 2 when the call failed */
J4T_API int32_t J4_KeyPressed(void);

/** @return 0 when the selected instrument is connected, else a status */
J4T_API J4_Result J4_IsConnected(void);

/**
 * Reads the densities of a sample.
 * @param densities     4 values are written; which density each is, the instrument's library tells
 * @param densityIndex  one more value of the instrument's library; handed on to it as it is
 * @param index         sample, counted from 0
 * @return status; 10 when densities is null
 */
J4T_API J4_Result J4_GetDensities(float* densities, int32_t* densityIndex, uint32_t index);

/**
 * Takes samples at the instrument's own pace and returns when they are taken.
 * @param count  number of samples
 * @return status
 */
J4T_API J4_Result J4_TriggerCountedScan(uint32_t count);

/**
 * Registers the receiver of failures.
 * @param handler  may be null
 * @return the handler registered before; null when there was none or the call failed
 */
J4T_API J4_ErrorHandler J4_RegisterErrorHandler(J4_ErrorHandler handler);

/**
 * Registers the receiver of device messages.
 * @param handler  may be null
 * @return the handler registered before; null when there was none or the call failed
 */
J4T_API J4_DeviceMessageHandler J4_RegisterDeviceMessageHandler(J4_DeviceMessageHandler handler);

/**
 * Reads the arm's position.
 * @param x, y  receive the position in the user's unit, millimetres by default (property 5030:
 *              0 millimetre, 1 tenth of a millimetre, 2 inch). Written only after success.
 * @return status; 10 for a null pointer
 */
J4T_API J4_Result J4_GetPosition(float* x, float* y);

/**
 * Moves the arm and waits for its arrival. A target within 0.05 mm of the origin on both axes means
 * J4_GoToHomePosition().
 * @param x, y  target in the user's unit
 * @return status; 102 for a target outside the work area, before anything moves
 */
J4T_API J4_Result J4_SetPosition(float x, float y);

/** Moves the arm to the white tile, by the motors' reference run. @return status */
J4T_API J4_Result J4_GoToHomePosition(void);

/**
 * Carries the instrument along a row of patches while it measures; the samples are read afterwards with
 * J4_GetNumberOfAvailableSamples() and J4_GetSpectrum().
 * @param startX, startY  first point of the row, in the user's unit
 * @param endX, endY      last point of the row
 * @return status. After a failure on the way no sample is left and the table stands at the row's end.
 */
J4T_API J4_Result J4_Scan(float startX, float startY, float endX, float endY);

/** @return 0 when a table is connected; 2 when there is none, which also reaches the error handler */
J4T_API J4_Result J4_IsTableConnected(void);

/**
 * Writes a new white base, the reflectance of the white tile, to the table's flash, and sets the table
 * up anew. The arm must be homed and the instrument calibrated again afterwards.
 * @param whiteBase  36 values, none of them 0; not tested for null
 * @return status; 103 when a value is 0, before anything is written
 */
J4T_API J4_Result J4_SynchronizeWhitebases(float* whiteBase);

/**
 * Operations for service programs. 1001 writes raw bytes to the table and 1002 reads raw bytes, both
 * with a ::J4PrivateTableRequest; other operations from 1000 to 1999 do nothing; all others go to the
 * instrument's library.
 * @param operation  what to do
 * @param record     what the operation reads and writes
 * @return the value of the instrument's library; 0 for 1000 to 1999 and after a failure. A null record for
 *         1001 or 1002 is refused like any null argument; every other failure of theirs shows in the record.
 */
J4T_API intptr_t J4_Private(int32_t operation, void* record);

#ifdef __cplusplus
}
#endif

#endif
