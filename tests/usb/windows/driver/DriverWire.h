/*
 * What the stand-in of the USB kernel driver and the test process say to each other. The driver hands every request of
 * the library to the test process, which answers for the table; the requests themselves stay pending in the driver
 * until then. One handle of the control device listens.
 */
#pragma once

#ifdef __cplusplus
#include <cstdint>
#else
#include <stdint.h>
#endif

#define J4_DRIVER_CONTROL_DEVICE "J4BenchUsb"

/* Control codes of the control device; device type 0x8300, buffered.
 * Exchange: in: nothing, or an answer and its data; out: the next request and its data, when there is one.
 * Plug:     in: table number (4 bytes) and the name of its link, UTF-16 without terminator.
 * Unplug:   in: table number; open handles stay, new ones can't be opened.
 * Mark:     the driver hands out a mark behind all that it knows of now. */
#define J4_DRIVER_EXCHANGE 0x83002000u
#define J4_DRIVER_PLUG 0x83002004u
#define J4_DRIVER_UNPLUG 0x83002008u
#define J4_DRIVER_MARK 0x8300200Cu

enum DriverRequestKind {
    DriverOpened = 1, /* not to be answered */
    DriverClosed,     /* not to be answered */
    DriverCancelled,  /* not to be answered: the request with this id has been cancelled */
    DriverMark,       /* not to be answered */
    DriverControl,
    DriverRead,
    DriverWrite
};

struct DriverRequest {
    uint64_t id;
    uint64_t handle; /* the same for all requests of one handle */
    uint32_t table;
    uint32_t kind;
    uint32_t code;       /* of a control request */
    uint32_t inputSize;  /* bytes that follow: the control code's input, or what is written */
    uint32_t dataSize;   /* bytes that follow the input: what stands in the output buffer of an OUT request */
    uint32_t outputSize; /* room of the caller */
};

enum DriverAnswerFlags {
    DriverKeepPending = 1 /* the bytes are what has arrived so far; the request goes on */
};

struct DriverAnswer {
    uint64_t id;
    uint32_t status;
    uint32_t flags;
    uint32_t information; /* byte count to report, also when it is more than what follows */
    uint32_t dataSize;    /* bytes that follow; no more than the caller's room are copied */
};
