/*
 * Stand-in of the USB kernel driver, for tests: takes what the library sends to a table's device and hands
 * it to the test process, which keeps an exchange request pending at the control device. Requests of the
 * library can be cancelled while they wait, and all fail when the test process has gone.
 */
#include <ntddk.h>

#include "tests/windows/driver/DriverWire.h"

#define MAXIMUM_TABLES 8
#define POOL_TAG 0x5534344au

/* As the device's driver says it. */
#define STATUS_TABLE_REMOVED ((NTSTATUS)0xE000100A)

typedef struct Table {
    BOOLEAN isControl;
    ULONG number;
    BOOLEAN hasLink;
    UNICODE_STRING link;
    WCHAR linkText[512];
} Table;

/* A request on its way; irp is null for what needs no answer. */
typedef struct Entry {
    LIST_ENTRY links;
    struct DriverRequest request;
    IRP* irp;
    ULONG arrived; /* bytes in the caller's buffer so far */
} Entry;

static KSPIN_LOCK lock;
static LIST_ENTRY waiting;  /* not yet told to the test process */
static LIST_ENTRY told;     /* told and not yet answered */
static IRP* exchange;       /* the test process's pending request */
static BOOLEAN isListening; /* somebody answers */
static ULONGLONG lastId;
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

/* The lock is held. Gives the exchange request that can be completed now, and fills its output. */
static IRP* TakeExchange(ULONG* length)
{
    IRP* const irp = exchange;
    if (irp == NULL || IsListEmpty(&waiting)) {
        return NULL;
    }
    if (IoSetCancelRoutine(irp, NULL) == NULL) {
        return NULL; /* it is being cancelled */
    }
    exchange = NULL;
    Entry* const entry = CONTAINING_RECORD(RemoveHeadList(&waiting), Entry, links);
    const ULONG room = IoGetCurrentIrpStackLocation(irp)->Parameters.DeviceIoControl.OutputBufferLength;
    UCHAR* to = irp->AssociatedIrp.SystemBuffer;
    struct DriverRequest* const request = &entry->request;
    *length = sizeof(*request) + request->inputSize + request->dataSize;
    if (*length > room) {
        request->inputSize = 0;
        request->dataSize = 0;
        *length = sizeof(*request);
    }
    RtlCopyMemory(to, request, sizeof(*request));
    if (entry->irp == NULL) {
        ExFreePoolWithTag(entry, POOL_TAG);
        return irp;
    }
    to += sizeof(*request);
    if (request->kind == DriverWrite) {
        Copy(to, CallerBuffer(entry->irp), request->inputSize);
    } else if (request->kind == DriverControl) {
        Copy(to, entry->irp->AssociatedIrp.SystemBuffer, request->inputSize);
        if (request->dataSize != 0) {
            Copy(to + request->inputSize, CallerBuffer(entry->irp), request->dataSize);
        }
    }
    InsertTailList(&told, &entry->links);
    return irp;
}

static void TellTestProcess(void)
{
    KIRQL level;
    ULONG length = 0;
    KeAcquireSpinLock(&lock, &level);
    IRP* const irp = TakeExchange(&length);
    KeReleaseSpinLock(&lock, level);
    if (irp != NULL) {
        Complete(irp, STATUS_SUCCESS, length);
    }
}

static Entry* NewEntry(const Table* table, ULONGLONG handle, ULONG kind, IRP* irp)
{
    Entry* const entry = ExAllocatePoolWithTag(NonPagedPool, sizeof(Entry), POOL_TAG);
    if (entry != NULL) {
        RtlZeroMemory(entry, sizeof(*entry));
        entry->request.handle = handle;
        entry->request.table = table->number;
        entry->request.kind = kind;
        entry->irp = irp;
    }
    return entry;
}

static void Note(const Table* table, ULONGLONG handle, ULONG kind, ULONGLONG id)
{
    Entry* const entry = NewEntry(table, handle, kind, NULL);
    if (entry != NULL) {
        KIRQL level;
        entry->request.id = id;
        KeAcquireSpinLock(&lock, &level);
        InsertTailList(&waiting, &entry->links);
        KeReleaseSpinLock(&lock, level);
        TellTestProcess();
    }
}

/* Nobody listens any more. */
static void FailAll(LIST_ENTRY* list)
{
    KIRQL level;
    for (;;) {
        Entry* entry = NULL;
        KeAcquireSpinLock(&lock, &level);
        if (!IsListEmpty(list)) {
            entry = CONTAINING_RECORD(RemoveHeadList(list), Entry, links);
            if (entry->irp != NULL && IoSetCancelRoutine(entry->irp, NULL) == NULL) {
                InitializeListHead(&entry->links); /* its cancel routine ends it */
                KeReleaseSpinLock(&lock, level);
                continue;
            }
        }
        KeReleaseSpinLock(&lock, level);
        if (entry == NULL) {
            return;
        }
        if (entry->irp != NULL) {
            Complete(entry->irp, STATUS_TABLE_REMOVED, 0);
        }
        ExFreePoolWithTag(entry, POOL_TAG);
    }
}

static void CancelExchange(DEVICE_OBJECT* device, IRP* irp)
{
    KIRQL level;
    (void)device;
    IoReleaseCancelSpinLock(irp->CancelIrql);
    KeAcquireSpinLock(&lock, &level);
    if (exchange == irp) {
        exchange = NULL;
    }
    isListening = FALSE;
    KeReleaseSpinLock(&lock, level);
    Complete(irp, STATUS_CANCELLED, 0);
    FailAll(&waiting);
    FailAll(&told);
}

static void CancelRequest(DEVICE_OBJECT* device, IRP* irp)
{
    KIRQL level;
    IoReleaseCancelSpinLock(irp->CancelIrql);
    Entry* const entry = irp->Tail.Overlay.DriverContext[0];
    KeAcquireSpinLock(&lock, &level);
    RemoveEntryList(&entry->links);
    KeReleaseSpinLock(&lock, level);
    Note(device->DeviceExtension, entry->request.handle, DriverCancelled, entry->request.id);
    Complete(irp, STATUS_CANCELLED, entry->arrived);
    ExFreePoolWithTag(entry, POOL_TAG);
}

/* Keeps the request until the test process has answered it. */
static NTSTATUS Pend(const Table* table, IRP* irp, ULONG kind, ULONG code, ULONG inputSize, ULONG dataSize,
                     ULONG outputSize)
{
    KIRQL level;
    BOOLEAN isCancelled = FALSE;
    Entry* const entry =
        isListening && !table->isControl
            ? NewEntry(table, (ULONGLONG)(ULONG_PTR)IoGetCurrentIrpStackLocation(irp)->FileObject, kind, irp)
            : NULL;
    if (entry == NULL) {
        return Complete(irp, STATUS_TABLE_REMOVED, 0);
    }
    entry->request.code = code;
    entry->request.inputSize = inputSize;
    entry->request.dataSize = dataSize;
    entry->request.outputSize = outputSize;
    irp->Tail.Overlay.DriverContext[0] = entry;
    IoMarkIrpPending(irp);
    KeAcquireSpinLock(&lock, &level);
    entry->request.id = ++lastId;
    InsertTailList(&waiting, &entry->links);
    IoSetCancelRoutine(irp, CancelRequest);
    if (irp->Cancel && IoSetCancelRoutine(irp, NULL) != NULL) {
        isCancelled = TRUE;
        RemoveEntryList(&entry->links);
    }
    KeReleaseSpinLock(&lock, level);
    if (isCancelled) {
        ExFreePoolWithTag(entry, POOL_TAG);
        Complete(irp, STATUS_CANCELLED, 0);
    } else {
        TellTestProcess();
    }
    return STATUS_PENDING;
}

static void TakeAnswer(const struct DriverAnswer* answer, const UCHAR* data)
{
    KIRQL level;
    Entry* found = NULL;
    KeAcquireSpinLock(&lock, &level);
    for (LIST_ENTRY* link = told.Flink; link != &told; link = link->Flink) {
        Entry* const entry = CONTAINING_RECORD(link, Entry, links);
        if (entry->request.id == answer->id) {
            found = entry;
        }
    }
    if (found != NULL) {
        const ULONG size = answer->dataSize < found->request.outputSize ? answer->dataSize : found->request.outputSize;
        if (size != 0) {
            Copy(CallerBuffer(found->irp), data, size);
        }
        found->arrived = size;
        if ((answer->flags & DriverKeepPending) != 0 || IoSetCancelRoutine(found->irp, NULL) == NULL) {
            found = NULL; /* goes on, or is just being cancelled */
        } else {
            RemoveEntryList(&found->links);
        }
    }
    KeReleaseSpinLock(&lock, level);
    if (found != NULL) {
        Complete(found->irp, (NTSTATUS)answer->status, answer->information);
        ExFreePoolWithTag(found, POOL_TAG);
    }
}

static NTSTATUS Exchange(IRP* irp, ULONG inputSize, ULONG outputSize)
{
    KIRQL level;
    ULONG length = 0;
    if (outputSize < sizeof(struct DriverRequest)) {
        return Complete(irp, STATUS_BUFFER_TOO_SMALL, 0);
    }
    if (inputSize >= sizeof(struct DriverAnswer)) {
        struct DriverAnswer answer;
        RtlCopyMemory(&answer, irp->AssociatedIrp.SystemBuffer, sizeof(answer));
        if (answer.dataSize > inputSize - sizeof(answer)) {
            return Complete(irp, STATUS_INVALID_PARAMETER, 0);
        }
        TakeAnswer(&answer, (const UCHAR*)irp->AssociatedIrp.SystemBuffer + sizeof(answer));
    }
    KeAcquireSpinLock(&lock, &level);
    if (exchange != NULL) {
        KeReleaseSpinLock(&lock, level);
        return Complete(irp, STATUS_DEVICE_BUSY, 0);
    }
    IoMarkIrpPending(irp);
    exchange = irp;
    isListening = TRUE;
    IoSetCancelRoutine(irp, CancelExchange);
    if (irp->Cancel && IoSetCancelRoutine(irp, NULL) != NULL) {
        exchange = NULL;
        KeReleaseSpinLock(&lock, level);
        Complete(irp, STATUS_CANCELLED, 0);
        return STATUS_PENDING;
    }
    IRP* const ready = TakeExchange(&length);
    KeReleaseSpinLock(&lock, level);
    if (ready != NULL) {
        Complete(ready, STATUS_SUCCESS, length);
    }
    return STATUS_PENDING;
}

static void RemoveLink(Table* table)
{
    if (table->hasLink) {
        IoDeleteSymbolicLink(&table->link);
        table->hasLink = FALSE;
    }
}

static NTSTATUS CreateNamed(DRIVER_OBJECT* driver, const WCHAR* name, DEVICE_OBJECT** device)
{
    UNICODE_STRING text;
    RtlInitUnicodeString(&text, name);
    const NTSTATUS status = IoCreateDevice(driver, sizeof(Table), &text, FILE_DEVICE_UNKNOWN, 0, FALSE, device);
    if (NT_SUCCESS(status)) {
        RtlZeroMemory((*device)->DeviceExtension, sizeof(Table));
    }
    return status;
}

/* Links the device under \DosDevices\name; size in bytes. */
static NTSTATUS Link(DEVICE_OBJECT* device, const WCHAR* deviceName, const WCHAR* name, ULONG size)
{
    static const WCHAR folder[] = L"\\DosDevices\\";
    const ULONG folderSize = sizeof(folder) - sizeof(WCHAR);
    Table* const table = device->DeviceExtension;
    UNICODE_STRING target;
    if (folderSize + size > sizeof(table->linkText)) {
        return STATUS_NAME_TOO_LONG;
    }
    RemoveLink(table);
    RtlCopyMemory(table->linkText, folder, folderSize);
    RtlCopyMemory((UCHAR*)table->linkText + folderSize, name, size);
    table->link.Buffer = table->linkText;
    table->link.Length = (USHORT)(folderSize + size);
    table->link.MaximumLength = sizeof(table->linkText);
    RtlInitUnicodeString(&target, deviceName);
    const NTSTATUS status = IoCreateSymbolicLink(&table->link, &target);
    table->hasLink = NT_SUCCESS(status);
    return status;
}

static NTSTATUS Plug(DRIVER_OBJECT* driver, ULONG number, const WCHAR* name, ULONG size)
{
    WCHAR deviceName[] = L"\\Device\\J4BenchTable0";
    if (number >= MAXIMUM_TABLES) {
        return STATUS_INVALID_PARAMETER;
    }
    deviceName[sizeof(deviceName) / sizeof(WCHAR) - 2] = (WCHAR)(L'0' + number);
    if (tables[number] == NULL) {
        const NTSTATUS status = CreateNamed(driver, deviceName, &tables[number]);
        if (!NT_SUCCESS(status)) {
            return status;
        }
        ((Table*)tables[number]->DeviceExtension)->number = number;
        tables[number]->Flags |= DO_DIRECT_IO;
        tables[number]->Flags &= ~DO_DEVICE_INITIALIZING;
    }
    return Link(tables[number], deviceName, name, size);
}

static NTSTATUS ControlOfTestProcess(DEVICE_OBJECT* device, IRP* irp, const IO_STACK_LOCATION* stack)
{
    const ULONG inputSize = stack->Parameters.DeviceIoControl.InputBufferLength;
    const UCHAR* const input = irp->AssociatedIrp.SystemBuffer;
    ULONG number = MAXIMUM_TABLES;
    switch (stack->Parameters.DeviceIoControl.IoControlCode) {
    case J4_DRIVER_EXCHANGE:
        return Exchange(irp, inputSize, stack->Parameters.DeviceIoControl.OutputBufferLength);
    case J4_DRIVER_MARK:
        Note(device->DeviceExtension, 0, DriverMark, 0);
        return Complete(irp, STATUS_SUCCESS, 0);
    case J4_DRIVER_PLUG:
    case J4_DRIVER_UNPLUG:
        if (inputSize < sizeof(number)) {
            return Complete(irp, STATUS_INVALID_PARAMETER, 0);
        }
        RtlCopyMemory(&number, input, sizeof(number));
        if (stack->Parameters.DeviceIoControl.IoControlCode == J4_DRIVER_PLUG) {
            return Complete(
                irp,
                Plug(device->DriverObject, number, (const WCHAR*)(input + sizeof(number)), inputSize - sizeof(number)),
                0);
        }
        if (number < MAXIMUM_TABLES && tables[number] != NULL) {
            RemoveLink(tables[number]->DeviceExtension);
        }
        return Complete(irp, STATUS_SUCCESS, 0);
    default:
        return Complete(irp, STATUS_INVALID_DEVICE_REQUEST, 0);
    }
}

static NTSTATUS NTAPI DispatchControl(DEVICE_OBJECT* device, IRP* irp)
{
    const IO_STACK_LOCATION* const stack = IoGetCurrentIrpStackLocation(irp);
    const Table* const table = device->DeviceExtension;
    const ULONG code = stack->Parameters.DeviceIoControl.IoControlCode;
    const ULONG outputSize = stack->Parameters.DeviceIoControl.OutputBufferLength;
    if (table->isControl) {
        return ControlOfTestProcess(device, irp, stack);
    }
    return Pend(table, irp, DriverControl, code, stack->Parameters.DeviceIoControl.InputBufferLength,
                (code & 3) == METHOD_IN_DIRECT ? outputSize : 0, outputSize);
}

static NTSTATUS NTAPI DispatchRead(DEVICE_OBJECT* device, IRP* irp)
{
    return Pend(device->DeviceExtension, irp, DriverRead, 0, 0, 0,
                IoGetCurrentIrpStackLocation(irp)->Parameters.Read.Length);
}

static NTSTATUS NTAPI DispatchWrite(DEVICE_OBJECT* device, IRP* irp)
{
    return Pend(device->DeviceExtension, irp, DriverWrite, 0,
                IoGetCurrentIrpStackLocation(irp)->Parameters.Write.Length, 0, 0);
}

static NTSTATUS NTAPI DispatchCreate(DEVICE_OBJECT* device, IRP* irp)
{
    const Table* const table = device->DeviceExtension;
    if (!table->isControl) {
        Note(table, (ULONGLONG)(ULONG_PTR)IoGetCurrentIrpStackLocation(irp)->FileObject, DriverOpened, 0);
    }
    return Complete(irp, STATUS_SUCCESS, 0);
}

static NTSTATUS NTAPI DispatchClose(DEVICE_OBJECT* device, IRP* irp)
{
    const Table* const table = device->DeviceExtension;
    if (!table->isControl) {
        Note(table, (ULONGLONG)(ULONG_PTR)IoGetCurrentIrpStackLocation(irp)->FileObject, DriverClosed, 0);
    }
    return Complete(irp, STATUS_SUCCESS, 0);
}

static void NTAPI Unload(DRIVER_OBJECT* driver)
{
    FailAll(&waiting);
    FailAll(&told);
    while (driver->DeviceObject != NULL) {
        DEVICE_OBJECT* const device = driver->DeviceObject;
        RemoveLink(device->DeviceExtension);
        IoDeleteDevice(device);
    }
}

NTSTATUS NTAPI DriverEntry(DRIVER_OBJECT* driver, UNICODE_STRING* registryPath)
{
    static const WCHAR deviceName[] =
        L"\\Device\\"
        L"" J4_DRIVER_CONTROL_DEVICE;
    static const WCHAR linkName[] = L"" J4_DRIVER_CONTROL_DEVICE;
    DEVICE_OBJECT* device = NULL;
    (void)registryPath;
    KeInitializeSpinLock(&lock);
    InitializeListHead(&waiting);
    InitializeListHead(&told);
    driver->MajorFunction[IRP_MJ_CREATE] = DispatchCreate;
    driver->MajorFunction[IRP_MJ_CLOSE] = DispatchClose;
    driver->MajorFunction[IRP_MJ_READ] = DispatchRead;
    driver->MajorFunction[IRP_MJ_WRITE] = DispatchWrite;
    driver->MajorFunction[IRP_MJ_DEVICE_CONTROL] = DispatchControl;
    driver->DriverUnload = Unload;
    NTSTATUS status = CreateNamed(driver, deviceName, &device);
    if (!NT_SUCCESS(status)) {
        return status;
    }
    ((Table*)device->DeviceExtension)->isControl = TRUE;
    device->Flags &= ~DO_DEVICE_INITIALIZING;
    status = Link(device, deviceName, linkName, sizeof(linkName) - sizeof(WCHAR));
    if (!NT_SUCCESS(status)) {
        IoDeleteDevice(device);
    }
    return status;
}
