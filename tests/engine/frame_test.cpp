// Frames, command classes, status bytes and the numbers inside of byte strings.
#include "core/wire/frame.h"

#include <gtest/gtest.h>

#include <map>

#include "core/wire/commands.h"
#include "core/wire/failures.h"
#include "core/wire/splitter.h"

namespace zvr {
namespace {

TEST(Frame, CommandFieldIsOneByteBelow256AndTwoFromThereOn) {
    const Bytes data = {1, 13, 10};
    EXPECT_EQ(buildFrame(GET_SERIAL_NUMBER, {}), (Bytes{2, 0, 1, 0x7A, 13, 10}));
    EXPECT_EQ(buildFrame(GET_SLOT_MODE, Bytes{1}), (Bytes{2, 0, 3, 8, 6, 1, 13, 10}));
    EXPECT_EQ(buildFrame(255, data), (Bytes{2, 0, 4, 255, 1, 13, 10, 13, 10}));
    EXPECT_EQ(buildFrame(256, data), (Bytes{2, 0, 5, 1, 0, 1, 13, 10, 13, 10}));
    EXPECT_EQ(buildFrame(0, {}), (Bytes{2, 0, 1, 0, 13, 10}));
    EXPECT_EQ(buildFrame(0xFFFF, {}), (Bytes{2, 0, 2, 255, 255, 13, 10}));
}

TEST(Frame, WhatDoesNotFitItsFieldsIsRefusedAndTheLargestFrameIsNot) {
    EXPECT_THROW(buildFrame(-1, {}), std::overflow_error);
    EXPECT_THROW(buildFrame(0x10000, {}), std::overflow_error);
    EXPECT_THROW(buildFrame(122, Bytes(0xFFFF)), std::overflow_error);
    EXPECT_THROW(buildFrame(0x806, Bytes(0xFFFE)), std::overflow_error);
    const Bytes narrow = buildFrame(122, Bytes(0xFFFE)), wide = buildFrame(0x806, Bytes(0xFFFD));
    EXPECT_EQ(narrow.size(), 0xFFFFu + 5);
    EXPECT_EQ(wide.size(), 0xFFFFu + 5);
    EXPECT_EQ(narrow[1], 0xFF);
    EXPECT_EQ(narrow[2], 0xFF);
}

// A command that a device can answer with must survive the way there and back.
TEST(Frame, EveryCommandOfTheTableComesBackFromItsFrameExceptTheOneThatReadsAsHalf) {
    const Bytes data = {7, 2, 13, 10, 0};
    for (const CommandName& row : commandTable()) {
        Splitter splitter;
        splitter.append(buildFrame(row.code, data));
        const auto packets = splitter.split();
        ASSERT_EQ(packets.size(), 1u) << row.name;
        if (row.code == OPEN_CAN) {
            EXPECT_EQ(packets[0], (Packet{OPEN_CAN * 256 + 7, {2, 13, 10, 0}}));
        } else {
            EXPECT_EQ(packets[0], (Packet{row.code, data})) << row.name;
        }
    }
}

TEST(Commands, CodeTableHasEveryNameOnceAndSharesOnlyTheNumbersThatAreMeantTo) {
    std::map<std::string_view, int> names;
    std::map<int, std::vector<std::string_view>> codes;
    for (const CommandName& row : commandTable()) {
        EXPECT_TRUE(names.emplace(row.name, row.code).second) << row.name;
        codes[row.code].push_back(row.name);
    }
    for (const auto& [code, sharing] : codes) {
        EXPECT_EQ(sharing.size() > 1, code == 75 || code == 209 || code == 10336) << sharing.back();
    }
    EXPECT_EQ(names.at("SET_LAMP"), names.at("WRITE_THERMAL_JUNCTION"));
    EXPECT_EQ(names.at("DRONE_MOVE_RELATIVE_X_NED"), names.at("DRONE_READ_MOVE_NED_REL_X"));
    EXPECT_EQ(names.at("DRONE_SET_BAROMETER_MODE"), 0x2920);
    EXPECT_EQ(names.at("AI_START_STREAMING_24BIT"), 0x200D);
    EXPECT_EQ(names.at("RTC_GET_ALARM_TRIG"), 0x8A8);
    EXPECT_EQ(names.at("MOTION_START_FIND_Z"), 0x1CA2);
}

TEST(Commands, OnlyTheListedOnesAreStreamsOrBroadcasts) {
    const Bytes reply = {1, 9}, request = {0, 9}, none;
    const std::map<int, const char*> special = {{49, "streaming"},     {129, "streaming"},    {183, "streaming"},
                                                {190, "streaming"},    {0x2049, "streaming"}, {211, "streaming"},
                                                {0x2401, "streaming"}, {0x200D, "streaming"}, {252, "broadcast"},
                                                {253, "broadcast"},    {0xA16, "broadcast"},  {254, "broadcast"}};
    for (int code = 0; code <= 0xFFFF; ++code) {
        const auto found = special.find(code);
        const std::string expected = found == special.end() ? "echo" : found->second;
        ASSERT_EQ(nameOf(classify(code, reply)), expected) << code;
        ASSERT_EQ(nameOf(classify(code, request)), expected == "broadcast" ? "ignore" : expected) << code;
        if (expected == "broadcast") {
            ASSERT_THROW(classify(code, none), std::out_of_range) << code;
        } else {
            ASSERT_EQ(nameOf(classify(code, none)), expected) << code;
        }
    }
}

TEST(Frame, MotionKeyTellsConnectorSubCommandAndAxisApart) {
    EXPECT_EQ(motionKey(Bytes{1, 2, 3}), 0x030102D0);
    EXPECT_EQ(motionKey(Bytes{1, 2, 3, 99}), 0x030102D0);
    EXPECT_EQ(motionKey(Bytes{0, 0, 0}), 208);
    EXPECT_EQ(motionKey(Bytes{0, 0, 0x80}), static_cast<int>(0x800000D0));  // signed
    EXPECT_THROW(motionKey(Bytes{1, 2}), std::out_of_range);
    EXPECT_THROW(motionKey({}), std::out_of_range);
}

TEST(Failures, EveryStatusByteHasItsClassAndUnknownOnesNeverPass) {
    // First status and last one of each run, and the code of the first class.
    struct Run {
        int first, last, code;
    };
    static constexpr Run runs[] = {{10, 13, -7000}, {20, 27, -7004}, {40, 42, -7012},
                                   {50, 57, -7015}, {70, 73, -7023}, {80, 80, -7027}};
    for (int status = 0; status <= 255; ++status) {
        std::optional<int> expected = -7028;
        if (status == 0) expected.reset();
        for (const Run& run : runs) {
            if (run.first <= status && status <= run.last) expected = run.code - (status - run.first);
        }
        const auto failure = failureOfStatus(status);
        const auto code = failure ? std::optional(rowOf(*failure).code) : std::nullopt;
        ASSERT_EQ(code, expected) << status;
    }
    EXPECT_EQ(rowOf(*failureOfStatus(21)).name, "FirmwareI2CError");
    EXPECT_EQ(rowOf(*failureOfStatus(14)).name, "FirmwareOtherError");
    EXPECT_EQ(rowOf(*failureOfStatus(-7000)).name, "FirmwareOtherError");
}

TEST(Failures, MessageOfTheThrowReplacesThatOfTheClassAndKeepsItsCode) {
    const Failure plain(FailureId::ReceivePacketTimeoutError), own(FailureId::ReceivePacketTimeoutError, "late");
    EXPECT_STREQ(plain.what(), "Receive packet timeout.");
    EXPECT_STREQ(own.what(), "late");
    EXPECT_EQ(rowOf(own.id()).code, -8004);
    EXPECT_FALSE(plain.message());
}

template <class Number>
void expectRoundTrip(Number value, const Bytes& bytes) {
    Bytes out = {0xAA};
    appendBigEndian(out, value);
    Bytes expected = {0xAA};
    expected.insert(expected.end(), bytes.begin(), bytes.end());
    EXPECT_EQ(out, expected);
    EXPECT_EQ(readBigEndian<Number>(bytes), value);
    Bytes longer = bytes;
    longer.push_back(0);
    EXPECT_THROW(readBigEndian<Number>(longer), WrongLength);
    EXPECT_THROW(readBigEndian<Number>(ByteView(bytes).first(bytes.size() - 1)), WrongLength);
}

TEST(Bytes, NumbersGoMostSignificantByteFirstWithTheirSign) {
    expectRoundTrip<std::uint8_t>(0xFE, {0xFE});
    expectRoundTrip<std::int8_t>(-2, {0xFE});
    expectRoundTrip<std::uint16_t>(0x8001, {0x80, 0x01});
    expectRoundTrip<std::int16_t>(-32767, {0x80, 0x01});
    expectRoundTrip<std::uint32_t>(0x80010203, {0x80, 1, 2, 3});
    expectRoundTrip<std::int32_t>(-2, {0xFF, 0xFF, 0xFF, 0xFE});
    expectRoundTrip<std::uint64_t>(0x8001020304050607, {0x80, 1, 2, 3, 4, 5, 6, 7});
    expectRoundTrip<std::int64_t>(std::numeric_limits<std::int64_t>::min(), {0x80, 0, 0, 0, 0, 0, 0, 0});
    expectRoundTrip<float>(-1.5F, {0xBF, 0xC0, 0, 0});
    expectRoundTrip<double>(0.1, {0x3F, 0xB9, 0x99, 0x99, 0x99, 0x99, 0x99, 0x9A});
}

TEST(Bytes, SliceNeverReachesBehindTheEnd) {
    const Bytes bytes = {1, 2, 3};
    EXPECT_EQ(slice(bytes, 1, 2).front(), 2);
    EXPECT_TRUE(slice(bytes, 3, 0).empty());
    EXPECT_THROW(slice(bytes, 2, 2), WrongLength);
    EXPECT_THROW(slice(bytes, 4, 0), WrongLength);
}

}  // namespace
}  // namespace zvr
