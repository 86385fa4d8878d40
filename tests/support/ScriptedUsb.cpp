#include "tests/support/ScriptedUsb.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "Utilities/Exceptions/TableExceptions.h"
#include "src/SerialUSB/UsbFactory.h"
#include "tests/support/ScriptedClock.h"
#include "trace/WireText.h"

namespace J4Test {

namespace {

/// Time that the bridge takes to answer when the table is silent, in milliseconds.
constexpr uint32_t Latency = 16;

/// More than any wait of the library; a time-out that wrapped around ends here instead of never.
constexpr int EndlessPolls = 20000;

ScriptedUsb* current = nullptr;

std::string Line(const std::string& text) { return text + J4Trace::WireChecksum(text) + "\r"; }

}  // namespace

std::string Reply(const std::string& body) { return Line(":" + body); }

/// What the library holds; the script may be gone before it.
class ScriptedUsbFace : public Kestrelon::DeviceDriver::J4T::LowLevel::Usb {
public:
    void Scan(unsigned short& count) override
    {
        Enter("scan");
        count = 1;
    }

    void Open(unsigned short index) override { Enter("open", " " + std::to_string(index)); }

    void Close() override { Enter("close"); }

    void DeviceIo(unsigned char request, unsigned short value, unsigned short index, bool in, void*,
                  short length) override
    {
        Enter("control", " " + std::to_string(request) + " " + std::to_string(value) + " " + std::to_string(index) +
                             (in ? " in " : " out ") + std::to_string(length));
    }

    void Read(short pipe, void* buffer, unsigned long* length) override
    {
        EXPECT_EQ(pipe, PipeIn);
        EXPECT_EQ(*length, 131072u);
        Script().Enter("read");
        const std::vector<uint8_t> bytes = Script().NextTransfer();
        *length = static_cast<unsigned long>(std::min<std::size_t>(bytes.size(), *length));
        std::memcpy(buffer, bytes.data(), *length);
    }

    void Write(short pipe, const void* data, unsigned long length) override
    {
        EXPECT_EQ(pipe, PipeOut);
        const std::string line(static_cast<const char*>(data), length);
        Enter("write", " " + line.substr(0, line.find('\r')));
        Script().Receive(line);
    }

    void Abort(short pipe) override { Enter("abort", " " + std::to_string(pipe)); }

    void GetSerialNumber(char* serial) override
    {
        Enter("serial");
        const std::string text = Script().serialNumber.substr(0, SerialNumberSize - 1);
        std::memcpy(serial, text.c_str(), text.size() + 1);
    }

private:
    static ScriptedUsb& Script()
    {
        if (current == nullptr) {
            throw CommunicationException("no device");
        }
        return *current;
    }

    static void Enter(const std::string& call, const std::string& arguments = std::string())
    {
        Script().journal.push_back(call + arguments);
        Script().Enter(call);
    }
};

ScriptedUsb::ScriptedUsb() { current = this; }

ScriptedUsb::~ScriptedUsb()
{
    EXPECT_EQ(Missing(), 0u) << "requests that did not come, the first of them " << expected.front().request;
    current = nullptr;
}

void ScriptedUsb::Clear()
{
    transfers.clear();
    journal.clear();
    requests.clear();
    reads = 0;
    idlePolls = 0;
}

void ScriptedUsb::Enter(const std::string& call)
{
    for (auto failure = failures.begin(); failure != failures.end(); ++failure) {
        if (failure->call == call && failure->skip-- == 0) {
            failures.erase(failure);
            throw CommunicationException("scripted failure of " + call);
        }
    }
}

std::vector<uint8_t> ScriptedUsb::NextTransfer()
{
    ++reads;
    if (transfers.empty()) {
        if (++idlePolls > EndlessPolls) {
            throw CommunicationException("the library never stops polling");
        }
        ScriptedClock::Advance(Latency);
        return Packed("");
    }
    const Transfer transfer = transfers.front();
    transfers.pop_front();
    ScriptedClock::Advance(transfer.delay);
    return transfer.bytes;
}

void ScriptedUsb::Receive(const std::string& line)
{
    const std::string body = line.size() < 4 ? std::string() : line.substr(1, line.size() - 4);
    if (line != Line(";" + body)) {
        return;  // raw text, for the journal alone
    }
    requests.push_back(body);
    Replies replies;
    if (!expected.empty()) {
        EXPECT_EQ(body, expected.front().request) << "as request number " << requests.size();
        replies = expected.front().replies;
        expected.pop_front();
    } else if (table) {
        replies = table(body);
    }
    for (const std::string& reply : replies) {
        Deliver(reply);
    }
}

}  // namespace J4Test

namespace Kestrelon::DeviceDriver::J4T::LowLevel {

Utilities::Tools::SmartPointer<Usb> CreateUsb(uint32_t vendorId, uint32_t productId)
{
    if (J4Test::current != nullptr) {
        J4Test::current->vendorId = vendorId;
        J4Test::current->productId = productId;
    }
    return Utilities::Tools::SmartPointer<Usb>(new J4Test::ScriptedUsbFace());
}

}  // namespace Kestrelon::DeviceDriver::J4T::LowLevel
