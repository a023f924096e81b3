// The serial client over pseudo-terminals, and the USB client where there is no library.
#include "transport/serial.h"

#include <gtest/gtest.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>

#include "core/wire/failures.h"
#include "core/wire/frame.h"
#include "support.h"
#include "transport/usb.h"

namespace zvr::testing {
namespace {

template <class Action>
std::optional<FailureId> errorOf(Action action) {
    try {
        action();
    } catch (const Failure& error) {
        return error.id();
    }
    return std::nullopt;
}

class SerialTest : public ::testing::Test {
protected:
    SerialTest() : far_(::posix_openpt(O_RDWR | O_NOCTTY)) {
        EXPECT_EQ(::grantpt(far_), 0);
        EXPECT_EQ(::unlockpt(far_), 0);
        port_ = ::ptsname(far_);
    }
    ~SerialTest() override { hangUp(); }

    void hangUp() {
        if (far_ >= 0) ::close(far_);
        far_ = -1;
    }
    void write(ByteView bytes) const {
        ASSERT_EQ(::write(far_, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }
    Bytes read(std::size_t count) const {
        Bytes all;
        while (all.size() < count) {
            Bytes some(count - all.size());
            const ssize_t got = ::read(far_, some.data(), some.size());
            if (got <= 0) break;
            all.insert(all.end(), some.begin(), some.begin() + got);
        }
        return all;
    }

    int far_;
    std::string port_;
    SerialClient client_;
};

TEST_F(SerialTest, EveryByteValuePassesUnchangedInBothDirections) {
    client_.connect(port_, 115200);
    Bytes all(256);
    for (std::size_t i = 0; i < all.size(); ++i) all[i] = static_cast<std::uint8_t>(i);
    ASSERT_TRUE(client_.send(all, patience()));
    EXPECT_EQ(read(all.size()), all);
    write(all);
    Bytes received;
    while (received.size() < all.size()) {
        Bytes buffer(64);
        ASSERT_EQ(client_.read(buffer), ReadStatus::data);
        received.insert(received.end(), buffer.begin(), buffer.end());
    }
    EXPECT_EQ(received, all);
}

TEST_F(SerialTest, SilentLineIsIdleAndHangUpEndsTheReads) {
    client_.connect(port_, 91600);
    Bytes buffer(64);
    const auto begin = Clock::now();
    EXPECT_EQ(client_.read(buffer), ReadStatus::idle);
    EXPECT_TRUE(buffer.empty());
    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(50));
    hangUp();
    buffer.resize(64);
    EXPECT_THROW(client_.read(buffer), std::system_error);
}

TEST_F(SerialTest, PortsThatAreMissingOrTakenFailByNameAndLeakNothing) {
    EXPECT_THROW(client_.connect("COM4", 9600), Failure);  // the first use of all makes what the others share
    const auto before = openDescriptors();
    for (const char* port : {"COM4", "/dev/null", "", "/nonexistent/port"}) {
        EXPECT_EQ(errorOf([&] { client_.connect(port, 9600); }), FailureId::UARTConnectionError) << port;
    }
    EXPECT_EQ(openDescriptors(), before);
    client_.connect(port_, 9600);
    SerialClient other;
    EXPECT_EQ(errorOf([&] { other.connect(port_, 9600); }), FailureId::UARTConnectionError);
    client_.close();
    other.connect(port_, 9600);
    EXPECT_TRUE(other.send(buildFrame(7, {}), patience()));
}

TEST(UsbWithoutLibrary, FindsNothingAndConnectsToNothing) {
    EXPECT_EQ(UsbLibrary::load("/nonexistent/libusb-1.0.so"), nullptr);
    EXPECT_TRUE(listUsbDevices(nullptr).empty());
    EXPECT_EQ(errorOf([] { const UsbClient client(nullptr, std::nullopt); }), FailureId::USBConnectionError);
}

}  // namespace
}  // namespace zvr::testing
