// How a device is put together from its modules, and how requests are read.
#include "device/device.h"

#include <gtest/gtest.h>

#include "modules/ports.h"

namespace zvr::sim {
namespace {

class NoPulses : public PulseSource {
public:
    Oscillator pulses(std::size_t) const override { return Oscillator(); }
};

std::string errorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const std::logic_error& error) {
        return error.what();
    }
    return "none";
}

TEST(Device, EveryModelIsPutTogetherWithoutContradiction) {
    for (const Model& model : models()) {
        EXPECT_EQ(errorOf([&] { const Device device(model); }), "none") << model.name;
    }
}

TEST(Device, ASecondRegistrationIsAnError) {
    Device device(*findModel("TarnThermo"));
    const auto answer = [](Request) { return Bytes(); };
    EXPECT_EQ(errorOf([&] { device.on(GET_SERIAL_NUMBER, answer); }),
              "command " + std::to_string(GET_SERIAL_NUMBER) + ", GET_SERIAL_NUMBER, is registered twice");
    EXPECT_EQ(errorOf([&] { device.onSilent(SET_LAMP, [](Request) {}); }),
              "command 75, WRITE_THERMAL_JUNCTION or SET_LAMP, is registered twice");
    EXPECT_EQ(errorOf([&] { device.pulseSource->pulses(0); }), "no module provides PulseSource");
    device.pulseSource.provide(std::make_shared<NoPulses>());
    EXPECT_EQ(errorOf([&] { device.pulseSource.provide(std::make_shared<NoPulses>()); }),
              "a second module provides PulseSource");
    device.scheduler.attach([] {});
    EXPECT_EQ(errorOf([&] { device.scheduler.attach([] {}); }), "the scheduler is run already");
}

TEST(Request, IsReadFromFrontToBack) {
    const Bytes data{1, 0x12, 0x34, 0x3F, 0xC0, 0, 0, 2, 8, 9};
    Request request(data);
    EXPECT_EQ(request.u8(), 1);
    EXPECT_EQ(request.u16(), 0x1234);
    EXPECT_EQ(request.f32(), 1.5F);
    EXPECT_EQ(request.taken().size(), 7U);
    Request tooLong = request;
    EXPECT_THROW(tooLong.last<std::uint16_t>(), WrongLength);
    const ByteView counted = request.lastCounted();
    EXPECT_EQ(Bytes(counted.begin(), counted.end()), (Bytes{8, 9}));
    EXPECT_EQ(request.left(), 0U);
    EXPECT_THROW(request.u8(), TooShort);
}

// Port 1 is there, and its level is one byte.
TEST(PortCommands, RefuseWithTheStatusOfTheFeature) {
    Device device(*findModel("TarnPot"));
    std::uint8_t level = 7;
    const PortCommands<std::uint8_t> ports(
        device, Status::digital, [&](std::uint8_t number, Request&) { return number == 1 ? &level : nullptr; });
    ports.onChange(WRITE_DO, [](std::uint8_t& level, Request r) {
        level = r.u8();
        return level < 100;
    });
    ports.onRead(READ_DI, 1, [](std::uint8_t& level) { return level; });
    const auto handled = [&](Command command, const Bytes& data) { return device.handle({command, data}).value(); };
    EXPECT_EQ(handled(READ_DI, {1}), (Bytes{1, 7}));
    EXPECT_EQ(handled(READ_DI, {2}), (Bytes{2, 0}));
    EXPECT_EQ(handled(WRITE_DO, {1, 99}), reply(std::uint8_t{1}, Status::ok));
    EXPECT_EQ(handled(WRITE_DO, {1, 100}), reply(std::uint8_t{1}, Status::digital));
    EXPECT_EQ(handled(WRITE_DO, {2, 1}), reply(std::uint8_t{2}, Status::digital));
    EXPECT_EQ(handled(WRITE_DO, {1}), reply(std::uint8_t{1}, Status::parser));
    EXPECT_EQ(handled(WRITE_DO, {}), reply(std::uint8_t{0}, Status::parser));
}

}  // namespace
}  // namespace zvr::sim
