/*
 * Stand-in of the USB kernel driver, for tests: hands what the library sends to a table's device to the test process,
 * which keeps an exchange request pending at the control device, and what that answers back to the library. Requests
 * of the library can be cancelled while they wait. Wine calls a driver in one thread, so nothing is locked here.
 */
#include <ntddk.h>

#include "tests/usb/windows/driver/DriverWire.h"

#define MAXIMUM_TABLES 8
#define POOL_TAG 0x5534344au

/* As the device's driver says it. */
#define STATUS_TABLE_REMOVED ((NTSTATUS)0xE000100A)

/* What belongs to a device: the link under which it can be opened. */
typedef struct Face {
    ULONG number;
    UNICODE_STRING link; /* empty: none */
    WCHAR linkText[512];
} Face;

/* A request on its way; irp is null for what needs no answer. */
typedef struct Entry {
    LIST_ENTRY links;
    struct DriverRequest request;
    IRP* irp;
    ULONG arrived; /* bytes in the caller's buffer so far */
} Entry;

static LIST_ENTRY waiting; /* not yet told to the listener */
static LIST_ENTRY told;    /* told and not yet answered */
static IRP* exchange;      /* the listener's pending request */
static ULONGLONG lastId;
static DEVICE_OBJECT* control;
static DEVICE_OBJECT* tables[MAXIMUM_TABLES];

static NTSTATUS Complete(IRP* irp, NTSTATUS status, ULONG_PTR information)
{
    irp->IoStatus.Status = status;
    irp->IoStatus.Information = information;
    IoCompleteRequest(irp, IO_NO_INCREMENT);
    return status;
}

/* Where the caller's data are: of a read, a write or the output of a direct control code. */
static UCHAR* CallerBuffer(IRP* irp)
{
    return irp->MdlAddress != NULL ? MmGetSystemAddressForMdlSafe(irp->MdlAddress, NormalPagePriority)
                                   : irp->AssociatedIrp.SystemBuffer;
}

static void Copy(UCHAR* to, const UCHAR* from, ULONG size)
{
    if (size != 0) {
        RtlCopyMemory(to, from, size);
    }
}

/* Tells the listener of the next request, when both are there. */
static void Tell(void)
{
    if (exchange == NULL || IsListEmpty(&waiting)) {
        return;
    }
    IRP* const irp = exchange;
    exchange = NULL;
    IoSetCancelRoutine(irp, NULL);
    Entry* const entry = CONTAINING_RECORD(RemoveHeadList(&waiting), Entry, links);
    struct DriverRequest* const request = &entry->request;
    const ULONG room = IoGetCurrentIrpStackLocation(irp)->Parameters.DeviceIoControl.OutputBufferLength;
    if (sizeof(*request) + request->inputSize + request->dataSize > room) {
        request->inputSize = 0;
        request->dataSize = 0;
    }
    const ULONG length = sizeof(*request) + request->inputSize + request->dataSize;
    UCHAR* const to = irp->AssociatedIrp.SystemBuffer;
    Copy(to, (const UCHAR*)request, sizeof(*request));
    if (entry->irp == NULL) {
        ExFreePoolWithTag(entry, POOL_TAG);
    } else {
        const UCHAR* const input =
            request->kind == DriverWrite ? CallerBuffer(entry->irp) : entry->irp->AssociatedIrp.SystemBuffer;
        Copy(to + sizeof(*request), input, request->inputSize);
        Copy(to + sizeof(*request) + request->inputSize, CallerBuffer(entry->irp), request->dataSize);
        InsertTailList(&told, &entry->links);
    }
    Complete(irp, STATUS_SUCCESS, length);
}

static Entry* Queue(const DEVICE_OBJECT* device, const FILE_OBJECT* file, ULONG kind, ULONGLONG id, IRP* irp)
{
    Entry* const entry = ExAllocatePoolWithTag(NonPagedPool, sizeof(Entry), POOL_TAG);
    if (entry != NULL) {
        RtlZeroMemory(entry, sizeof(*entry));
        entry->request.id = id;
        entry->request.handle = (ULONGLONG)(ULONG_PTR)file;
        entry->request.table = ((const Face*)device->DeviceExtension)->number;
        entry->request.kind = kind;
        entry->irp = irp;
        InsertTailList(&waiting, &entry->links);
    }
    return entry;
}

/* For what needs no answer. */
static void Note(const DEVICE_OBJECT* device, const FILE_OBJECT* file, ULONG kind, ULONGLONG id)
{
    Queue(device, file, kind, id, NULL);
    Tell();
}

static void End(Entry* entry, NTSTATUS status, ULONG_PTR information)
{
    RemoveEntryList(&entry->links);
    if (entry->irp != NULL) {
        IoSetCancelRoutine(entry->irp, NULL);
        Complete(entry->irp, status, information);
    }
    ExFreePoolWithTag(entry, POOL_TAG);
}

/* Nobody listens any more. */
static void FailAll(LIST_ENTRY* list)
{
    while (!IsListEmpty(list)) {
        End(CONTAINING_RECORD(list->Flink, Entry, links), STATUS_TABLE_REMOVED, 0);
    }
}

static void CancelExchange(DEVICE_OBJECT* device, IRP* irp)
{
    (void)device;
    IoReleaseCancelSpinLock(irp->CancelIrql);
    exchange = NULL;
    Complete(irp, STATUS_CANCELLED, 0);
    FailAll(&waiting);
    FailAll(&told);
}

static void CancelRequest(DEVICE_OBJECT* device, IRP* irp)
{
    IoReleaseCancelSpinLock(irp->CancelIrql);
    Entry* const entry = irp->Tail.Overlay.DriverContext[0];
    Note(device, (const FILE_OBJECT*)(ULONG_PTR)entry->request.handle, DriverCancelled, entry->request.id);
    End(entry, STATUS_CANCELLED, entry->arrived);
}

/* Keeps the request until the listener has answered it. */
static NTSTATUS Pend(DEVICE_OBJECT* device, IRP* irp, ULONG kind, ULONG code, ULONG inputSize, ULONG dataSize,
                     ULONG outputSize)
{
    Entry* const entry = Queue(device, IoGetCurrentIrpStackLocation(irp)->FileObject, kind, ++lastId, irp);
    if (entry == NULL) {
        return Complete(irp, STATUS_TABLE_REMOVED, 0);
    }
    entry->request.code = code;
    entry->request.inputSize = inputSize;
    entry->request.dataSize = dataSize;
    entry->request.outputSize = outputSize;
    irp->Tail.Overlay.DriverContext[0] = entry;
    IoMarkIrpPending(irp);
    IoSetCancelRoutine(irp, CancelRequest);
    Tell();
    return STATUS_PENDING;
}

static void TakeAnswer(const struct DriverAnswer* answer)
{
    for (LIST_ENTRY* link = told.Flink; link != &told; link = link->Flink) {
        Entry* const entry = CONTAINING_RECORD(link, Entry, links);
        if (entry->request.id == answer->id) {
            entry->arrived =
                answer->dataSize < entry->request.outputSize ? answer->dataSize : entry->request.outputSize;
            Copy(CallerBuffer(entry->irp), (const UCHAR*)(answer + 1), entry->arrived);
            if ((answer->flags & DriverKeepPending) == 0) {
                End(entry, (NTSTATUS)answer->status, answer->information);
            }
            return;
        }
    }
}

static NTSTATUS Exchange(IRP* irp, const IO_STACK_LOCATION* stack)
{
    const struct DriverAnswer* const answer = irp->AssociatedIrp.SystemBuffer;
    const ULONG inputSize = stack->Parameters.DeviceIoControl.InputBufferLength;
    if (stack->Parameters.DeviceIoControl.OutputBufferLength < sizeof(struct DriverRequest)) {
        return Complete(irp, STATUS_BUFFER_TOO_SMALL, 0);
    }
    if (inputSize >= sizeof(*answer) && answer->dataSize <= inputSize - sizeof(*answer)) {
        TakeAnswer(answer);
    }
    IoMarkIrpPending(irp);
    exchange = irp;
    IoSetCancelRoutine(irp, CancelExchange);
    Tell();
    return STATUS_PENDING;
}

static void RemoveLink(DEVICE_OBJECT* device)
{
    Face* const face = device->DeviceExtension;
    if (face->link.Length != 0) {
        IoDeleteSymbolicLink(&face->link);
        face->link.Length = 0;
    }
}

/* Makes the device, unless it is there, and links it under \DosDevices\name; size in bytes. */
static NTSTATUS Plug(DRIVER_OBJECT* driver, DEVICE_OBJECT** device, ULONG number, const WCHAR* name, ULONG size)
{
    static const WCHAR folder[] = L"\\DosDevices\\";
    const ULONG folderSize = sizeof(folder) - sizeof(WCHAR);
    WCHAR deviceName[] = L"\\Device\\J4BenchTable0";
    UNICODE_STRING target;
    deviceName[sizeof(deviceName) / sizeof(WCHAR) - 2] = (WCHAR)(L'0' + number);
    RtlInitUnicodeString(&target, deviceName);
    if (*device == NULL) {
        const NTSTATUS status = IoCreateDevice(driver, sizeof(Face), &target, FILE_DEVICE_UNKNOWN, 0, FALSE, device);
        if (!NT_SUCCESS(status)) {
            return status;
        }
        RtlZeroMemory((*device)->DeviceExtension, sizeof(Face));
        (*device)->Flags |= device != &control ? DO_DIRECT_IO : 0;
        (*device)->Flags &= ~DO_DEVICE_INITIALIZING;
    }
    Face* const face = (*device)->DeviceExtension;
    if (folderSize + size > sizeof(face->linkText)) {
        return STATUS_NAME_TOO_LONG;
    }
    RemoveLink(*device);
    RtlCopyMemory(face->linkText, folder, folderSize);
    RtlCopyMemory((UCHAR*)face->linkText + folderSize, name, size);
    face->number = number;
    face->link.Buffer = face->linkText;
    face->link.Length = (USHORT)(folderSize + size);
    face->link.MaximumLength = sizeof(face->linkText);
    const NTSTATUS status = IoCreateSymbolicLink(&face->link, &target);
    face->link.Length = NT_SUCCESS(status) ? face->link.Length : 0;
    return status;
}

static NTSTATUS ControlOfTestProcess(DEVICE_OBJECT* device, IRP* irp, const IO_STACK_LOCATION* stack)
{
    const ULONG inputSize = stack->Parameters.DeviceIoControl.InputBufferLength;
    const UCHAR* const input = irp->AssociatedIrp.SystemBuffer;
    const ULONG code = stack->Parameters.DeviceIoControl.IoControlCode;
    ULONG number = MAXIMUM_TABLES;
    if (code == J4_DRIVER_EXCHANGE) {
        return Exchange(irp, stack);
    }
    if (code == J4_DRIVER_MARK) {
        Note(device, NULL, DriverMark, 0);
        return Complete(irp, STATUS_SUCCESS, 0);
    }
    if (inputSize >= sizeof(number)) {
        RtlCopyMemory(&number, input, sizeof(number));
    }
    if (number >= MAXIMUM_TABLES) {
        return Complete(irp, STATUS_INVALID_PARAMETER, 0);
    }
    NTSTATUS status = STATUS_SUCCESS;
    if (code == J4_DRIVER_PLUG) {
        status = Plug(device->DriverObject, &tables[number], number, (const WCHAR*)(input + sizeof(number)),
                      inputSize - sizeof(number));
    } else if (tables[number] != NULL) {
        RemoveLink(tables[number]);
    }
    return Complete(irp, status, 0);
}

static NTSTATUS NTAPI Dispatch(DEVICE_OBJECT* device, IRP* irp)
{
    const IO_STACK_LOCATION* const stack = IoGetCurrentIrpStackLocation(irp);
    switch (stack->MajorFunction) {
    case IRP_MJ_READ:
        return Pend(device, irp, DriverRead, 0, 0, 0, stack->Parameters.Read.Length);
    case IRP_MJ_WRITE:
        return Pend(device, irp, DriverWrite, 0, stack->Parameters.Write.Length, 0, 0);
    case IRP_MJ_DEVICE_CONTROL: {
        const ULONG code = stack->Parameters.DeviceIoControl.IoControlCode;
        const ULONG outputSize = stack->Parameters.DeviceIoControl.OutputBufferLength;
        if (device == control) {
            return ControlOfTestProcess(device, irp, stack);
        }
        return Pend(device, irp, DriverControl, code, stack->Parameters.DeviceIoControl.InputBufferLength,
                    (code & 3) == METHOD_IN_DIRECT ? outputSize : 0, outputSize);
    }
    default: /* a handle is opened or closed */
        if (device != control) {
            Note(device, stack->FileObject, stack->MajorFunction == IRP_MJ_CREATE ? DriverOpened : DriverClosed, 0);
        }
        return Complete(irp, STATUS_SUCCESS, 0);
    }
}

static void NTAPI Unload(DRIVER_OBJECT* driver)
{
    FailAll(&waiting);
    FailAll(&told);
    while (driver->DeviceObject != NULL) {
        RemoveLink(driver->DeviceObject);
        IoDeleteDevice(driver->DeviceObject);
    }
}

NTSTATUS NTAPI DriverEntry(DRIVER_OBJECT* driver, UNICODE_STRING* registryPath)
{
    static const WCHAR name[] = L"" J4_DRIVER_CONTROL_DEVICE;
    static const UCHAR functions[] = {IRP_MJ_CREATE, IRP_MJ_CLOSE, IRP_MJ_READ, IRP_MJ_WRITE, IRP_MJ_DEVICE_CONTROL};
    (void)registryPath;
    InitializeListHead(&waiting);
    InitializeListHead(&told);
    for (ULONG i = 0; i < sizeof(functions); ++i) {
        driver->MajorFunction[functions[i]] = Dispatch;
    }
    driver->DriverUnload = Unload;
    return Plug(driver, &control, MAXIMUM_TABLES, name, sizeof(name) - sizeof(WCHAR));
}
