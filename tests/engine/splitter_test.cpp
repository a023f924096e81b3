// The splitter against the golden frames, and against the literal search on streams that nobody would send.
#include "core/wire/splitter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <random>
#include <sstream>

#include "core/wire/commands.h"
#include "literal_splitter.h"

namespace zvr {

std::ostream& operator<<(std::ostream& out, const Packet& packet) {
    return out << packet.command << " with " << packet.data.size() << " bytes";
}

namespace {

using testing::LiteralSplitter;

std::vector<std::string> fieldsOf(const std::string& line, char divider) {
    std::vector<std::string> fields;
    std::istringstream in(line + divider);
    for (std::string field; std::getline(in, field, divider);) fields.push_back(field);
    return fields;
}

Bytes bytesOf(const std::string& hex) {
    std::string digits;
    std::ranges::copy_if(hex, std::back_inserter(digits), [](unsigned char c) { return std::isxdigit(c) != 0; });
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(digits.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

std::vector<Packet> packetsOf(const std::string& text) {
    std::vector<Packet> packets;
    std::istringstream in(text);
    for (std::string word; in >> word;) {
        const std::size_t colon = word.find(':');
        packets.push_back({std::stoi(word), bytesOf(word.substr(colon + 1))});
    }
    return packets;
}

Bytes copyOf(ByteView bytes) { return {bytes.begin(), bytes.end()}; }

TEST(Splitter, CutsTheGoldenFrames) {
    std::ifstream file(ZVR_GOLDEN_FOLDER "/frames.txt");
    int cases = 0;
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line[0] == '#') continue;
        SCOPED_TRACE(line);
        ++cases;
        const auto fields = fieldsOf(line, '|');
        ASSERT_EQ(fields.size(), 5u);
        const auto reads = fieldsOf(fields[1], '/'), packets = fieldsOf(fields[2], '/');
        ASSERT_EQ(reads.size(), packets.size());
        Splitter splitter;
        LiteralSplitter literal;
        for (std::size_t i = 0; i < reads.size(); ++i) {
            splitter.append(bytesOf(reads[i]));
            literal.append(bytesOf(reads[i]));
            EXPECT_EQ(splitter.split(), packetsOf(packets[i])) << "after read " << i;
            EXPECT_EQ(literal.split(), packetsOf(packets[i])) << "after read " << i;
        }
        EXPECT_EQ(copyOf(splitter.stream()), bytesOf(fields[3]));
        EXPECT_EQ(splitter.lastIndex(), std::stoul(fields[4]));
        EXPECT_EQ(literal.stream, bytesOf(fields[3]));
        EXPECT_EQ(literal.lastIndex, std::stoul(fields[4]));
    }
    EXPECT_GE(cases, 30);
}

// Makes streams of the pieces that matter to a search: start bytes, lengths near and far, trailers, frames in frames.
class StreamMaker {
public:
    explicit StreamMaker(unsigned seed) : random_(seed) {}

    std::size_t below(std::size_t bound) { return random_() % bound; }

    Bytes piece(int depth = 0) {
        switch (below(10)) {
            case 0: return {CMD_STX};
            case 1: return {CMD_CR, CMD_LF};
            case 2: return {below(2) == 0 ? std::uint8_t{CMD_CR} : std::uint8_t{CMD_LF}};
            case 3: return {CMD_STX, 0, static_cast<std::uint8_t>(below(40))};
            case 4: return {CMD_STX, static_cast<std::uint8_t>(below(3)), static_cast<std::uint8_t>(below(256))};
            case 5: return {CMD_STX, 0x7F, static_cast<std::uint8_t>(0xFF - below(4))};
            case 6:
                return {CMD_STX, static_cast<std::uint8_t>(0x80 + below(0x80)), static_cast<std::uint8_t>(below(256))};
            case 7:
                if (depth < 4) return frame(depth);
                [[fallthrough]];
            case 8: return letters(below(12));
            default: return noise(below(80));
        }
    }

    /// A stream of `size` bytes or a little more: `dense` pieces divided by fill of no meaning.
    Bytes stream(std::size_t size, bool dense) {
        Bytes bytes;
        while (bytes.size() < size) {
            append(bytes, piece());
            if (!dense) bytes.insert(bytes.end(), below(200), 0x55);
            // The trailer that an earlier start byte asks for, if it is not too near for that.
            if (below(20) == 0) farFrame(bytes, dense ? 300 : 0x7FFF);
        }
        return bytes;
    }

private:
    static void append(Bytes& bytes, const Bytes& more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

    Bytes letters(std::size_t count) {
        static constexpr std::uint8_t alphabet[] = {2, 13, 10, 0, 1, 3, 0x30, 0x31, 0x7F};
        Bytes bytes(count);
        for (auto& byte : bytes) byte = alphabet[below(std::size(alphabet))];
        return bytes;
    }

    Bytes noise(std::size_t count) {
        Bytes bytes(count);
        for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random_());
        return bytes;
    }

    Bytes frame(int depth) {
        Bytes data;
        for (std::size_t i = below(4); i > 0; --i) append(data, piece(depth + 1));
        return buildFrame(static_cast<int>(below(2) == 0 ? below(256) : below(0x10000)), data);
    }

    // A start byte, its length's worth of fill with a few traps, and mostly its trailer.
    void farFrame(Bytes& bytes, std::size_t longest) {
        const std::size_t length = below(longest) + 1;
        bytes.push_back(CMD_STX);
        appendBigEndian(bytes, static_cast<std::uint16_t>(length));
        const std::size_t end = bytes.size() + length;
        while (bytes.size() < end) {
            append(bytes, piece(4));
            bytes.insert(bytes.end(), below(length), 0x55);
        }
        bytes.resize(end);
        if (below(8) != 0) append(bytes, {CMD_CR, CMD_LF});
    }

    std::mt19937 random_;
};

// Feeds one stream to both in reads of at most `longestRead`, sometimes with a hand in their state; tells the packets.
std::size_t compare(StreamMaker& maker, const Bytes& stream, std::size_t longestRead, bool meddle) {
    Splitter splitter;
    LiteralSplitter literal;
    std::size_t packets = 0;
    for (std::size_t from = 0; from < stream.size();) {
        const std::size_t count = std::min(maker.below(longestRead + 1), stream.size() - from);
        const ByteView read = ByteView(stream).subspan(from, count);
        from += count;
        splitter.append(read);
        literal.append(read);
        if (meddle && maker.below(16) == 0) {
            const std::size_t index = maker.below(literal.stream.size() + 3);
            splitter.setLastIndex(index);
            literal.lastIndex = index;
        }
        if (meddle && maker.below(16) == 0) {
            const Bytes kept(
                literal.stream.begin() + static_cast<std::ptrdiff_t>(maker.below(literal.stream.size() + 1)),
                literal.stream.end());
            splitter.setStream(kept);
            literal.stream = kept;
        }
        const auto expected = literal.split();
        packets += expected.size();
        EXPECT_EQ(splitter.split(), expected) << "at byte " << from;
        EXPECT_TRUE(std::ranges::equal(splitter.stream(), literal.stream)) << "at byte " << from;
        EXPECT_EQ(splitter.lastIndex(), literal.lastIndex) << "at byte " << from;
        if (::testing::Test::HasFailure()) break;
    }
    return packets;
}

TEST(Splitter, AgreesWithTheLiteralSearchOnDenseStreamsHoweverTheyAreCut) {
    std::size_t packets = 0;
    for (unsigned seed = 0; seed < 3000 && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        StreamMaker maker(seed);
        static constexpr std::size_t reads[] = {1, 3, 64, 512, 1536};
        packets += compare(maker, maker.stream(maker.below(1500), true), reads[seed % 5], seed % 3 == 0);
    }
    EXPECT_GT(packets, 10'000u);
}

TEST(Splitter, AgreesWithTheLiteralSearchWherePredictionsWrapAroundTheRing) {
    std::size_t packets = 0;
    for (unsigned seed = 0; seed < 24 && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        StreamMaker maker(1000 + seed);
        static constexpr std::size_t reads[] = {1536, 9606, 400'000};
        packets += compare(maker, maker.stream(200'000, false), reads[seed % 3], seed % 4 == 3);
    }
    EXPECT_GT(packets, 500u);
}

// No frame at all for more than a turn of the ring, then predictions from all over the last turn come true.
TEST(Splitter, KeepsItsMarksApartOverManyTurnsWithoutAFrame) {
    for (unsigned seed = 0; seed < 12 && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        StreamMaker maker(2000 + seed);
        Bytes stream;
        while (stream.size() < 150'000) {
            stream.insert(stream.end(), 40 + maker.below(400), 0x55);
            const auto far = static_cast<std::uint8_t>(maker.below(0x80));
            // A place that an earlier turn predicted for its own trailers holds one now and then.
            for (const std::uint8_t byte : {CMD_STX, int{far}, 0xAA, CMD_CR, CMD_LF}) {
                stream.push_back(static_cast<std::uint8_t>(byte));
            }
            if (maker.below(50) != 0 || stream.size() < 70'000) continue;
            const std::size_t start = stream.size() - 5, trailer = start + 3 + (std::size_t{far} << 8 | 0xAA);
            stream.resize(std::max(stream.size(), trailer), 0x55);
            stream.insert(stream.end(), {CMD_CR, CMD_LF});
        }
        compare(maker, stream, 9606, false);
    }
}

// One read that holds several turns of the ring, with trailers in every part of it and now and then a start byte.
TEST(Splitter, KeepsItsMarksApartWhereTrailersAreDense) {
    for (unsigned seed = 0; seed < 4 && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        StreamMaker maker(3000 + seed);
        Bytes stream;
        while (stream.size() < 140'000) {
            if (maker.below(30) == 0) {
                stream.insert(stream.end(), {CMD_STX, static_cast<std::uint8_t>(maker.below(0x100)), 0x55});
            }
            stream.insert(stream.end(), maker.below(120), 0x55);
            stream.insert(stream.end(), {CMD_CR, CMD_LF});
        }
        compare(maker, stream, seed % 2 == 0 ? 9606 : 600'000, false);
    }
}

// What a start byte predicts before the next trailer, or would predict if its length were not signed, must not come
// true at another place of the same remainder.
TEST(Splitter, PredictionsThatCannotComeTrueLeaveNoMark) {
    StreamMaker maker(1);
    for (const std::size_t length : {0, 1, 2, 4, 7, 60, 0x7FFF, 0x8000, 0x8001, 0xC000, 0xFFFF}) {
        for (const std::size_t gap : {3, 4, 5, 6, 8, 10, 11, 12, 20, 66, 67, 70, 130}) {
            SCOPED_TRACE("length " + std::to_string(length) + ", next trailer after " + std::to_string(gap));
            Bytes stream(10, 0x55);
            const std::size_t start = stream.size();
            stream.push_back(CMD_STX);
            appendBigEndian(stream, static_cast<std::uint16_t>(length));
            stream.resize(start + gap, 0x55);
            stream.insert(stream.end(), {CMD_CR, CMD_LF});
            const std::size_t place = start + 3 + length;
            for (const std::size_t trailer : {place, place + 0x10000}) {
                if (trailer < stream.size()) continue;
                stream.resize(trailer, 0x55);
                stream.insert(stream.end(), {CMD_CR, CMD_LF});
            }
            compare(maker, stream, gap % 2 == 0 ? 9606 : 400'000, false);
            if (HasFailure()) return;
        }
    }
}

// A start byte predicts its trailer wherever it stands in the ring and however long nothing came before.
TEST(Splitter, FindsAFrameBehindAGapOfAnyLength) {
    for (const std::size_t gap : {0, 100, 30'000, 32'770, 33'000, 65'400, 65'536, 66'000, 70'000, 100'000, 131'100}) {
        SCOPED_TRACE("gap of " + std::to_string(gap));
        Bytes stream = {CMD_STX, 1, 200, 0x55, CMD_CR, CMD_LF};  // comes to nothing
        stream.insert(stream.end(), gap, 0x55);
        Bytes data(2000, 0x55);
        for (const std::size_t trap : {5, 700}) {
            data[trap] = CMD_CR;
            data[trap + 1] = CMD_LF;
        }
        const Bytes frame = buildFrame(183, data);
        stream.insert(stream.end(), frame.begin(), frame.end());
        StreamMaker maker(1);
        EXPECT_EQ(compare(maker, stream, 9606, false), 1u);
        EXPECT_EQ(compare(maker, stream, 400'000, false), 1u);
    }
}

// Marks are of few values: one that was left by a frame long ago must not count again.
TEST(Splitter, ForgetsThePredictionsOfHundredsOfFramesAgo) {
    // A start byte that predicts a place without a trailer, a trailer that nobody predicts, and a frame.
    const auto bait = [](std::uint8_t length, std::size_t trailer) {
        Bytes stream = {CMD_STX, 0, length};
        stream.resize(trailer, 0x55);
        stream.insert(stream.end(), {CMD_CR, CMD_LF, CMD_STX, 0, 1, GET_RSSI, CMD_CR, CMD_LF});
        return stream;
    };
    for (int frames = 250; frames < 260; ++frames) {
        SCOPED_TRACE(std::to_string(frames) + " frames between");
        Splitter splitter;
        splitter.append(bait(20, 20));  // predicts place 23, behind the first trailer
        for (int i = 0; i < frames; ++i) splitter.append(bait(2, 20));
        splitter.append(bait(2, 23));
        const auto packets = splitter.split();
        EXPECT_EQ(packets, std::vector<Packet>(static_cast<std::size_t>(frames) + 2, {GET_RSSI, {}}));
    }
}

TEST(Splitter, TakesDenseBaitWithoutMissingTheFrameBehindIt) {
    for (const Bytes& bait : {Bytes{CMD_STX}, Bytes{CMD_CR}, Bytes{CMD_CR, CMD_LF}, Bytes{CMD_STX, CMD_CR, CMD_LF},
                              Bytes{CMD_STX, 0x7F, 0xC8, CMD_CR, CMD_LF}, Bytes{CMD_STX, CMD_STX, CMD_CR}}) {
        for (std::size_t count = 0; count < 150; ++count) {
            SCOPED_TRACE("bait of " + std::to_string(bait.size()) + " bytes, " + std::to_string(count) + " times");
            StreamMaker maker(1);
            Bytes stream;
            for (std::size_t i = 0; i < count; ++i) stream.insert(stream.end(), bait.begin(), bait.end());
            const Bytes good = buildFrame(183, Bytes(count, 0x55));
            stream.insert(stream.end(), good.begin(), good.end());
            compare(maker, stream, 2000, false);
            if (HasFailure()) return;
        }
    }
}

// Noise without end must not fill the memory, nor hide a frame that comes at last.
TEST(Splitter, EndlessNoiseIsDroppedAndTheNextFrameIsFound) {
    constexpr std::size_t mebibyte = 1 << 20;
    for (const Bytes& pattern :
         {Bytes{CMD_STX, 0x7F, 0xFF, CMD_CR, CMD_LF}, Bytes{CMD_CR}, Bytes{CMD_STX}, Bytes{0x55}}) {
        SCOPED_TRACE("noise that begins with " + std::to_string(pattern[0]));
        Bytes noise;
        while (noise.size() < 9600) noise.insert(noise.end(), pattern.begin(), pattern.end());
        Splitter splitter;
        for (std::size_t sent = 0; sent < 8 * mebibyte; sent += noise.size()) {
            splitter.append(noise);
            ASSERT_TRUE(splitter.split().empty());
            ASSERT_LT(splitter.stream().size(), mebibyte + noise.size());
            if (sent / noise.size() % 32 != 0) continue;
            const std::size_t index = splitter.lastIndex();
            ASSERT_LE(index, splitter.stream().size());
            if (pattern.size() > 1) {
                ASSERT_EQ(splitter.stream()[index - 1], CMD_CR);
            } else {
                ASSERT_EQ(index, 0u);
            }
        }
        splitter.append(Bytes(40'000, 0x55));  // out of reach of what the noise predicts
        splitter.append(buildFrame(183, Bytes(100, 1)));
        EXPECT_EQ(splitter.split(), (std::vector<Packet>{{183, Bytes(100, 1)}}));
        EXPECT_TRUE(splitter.stream().empty());
    }
}

// As a caller does who lets the search begin late.
TEST(Splitter, LastIndexSetByHandMovesWithTheStreamWhenTheDeadPartIsDropped) {
    Splitter splitter;
    Bytes stream(1'200'000, 0x55);
    const Bytes frame = buildFrame(183, Bytes(20, 1));
    std::ranges::copy(frame, stream.end() - 1000);
    splitter.setStream(stream);
    splitter.setLastIndex(stream.size() - 100);
    EXPECT_TRUE(splitter.split().empty());
    EXPECT_LT(splitter.stream().size(), 1u << 20);
    EXPECT_EQ(splitter.lastIndex(), splitter.stream().size() - 100);
    splitter.append(frame);
    EXPECT_EQ(splitter.split(), (std::vector<Packet>{{183, Bytes(20, 1)}}));
}

TEST(Splitter, FindsALongFrameWhoseStartCameBeforeTheDeadPartWasDropped) {
    constexpr std::size_t limit = 1 << 20;
    for (const std::size_t ahead : {0u, 1u, 100u, 32'767u, 32'768u, 32'769u, 32'770u, 32'771u, 40'000u}) {
        SCOPED_TRACE(std::to_string(ahead) + " bytes before the limit");
        Splitter splitter;
        splitter.append(Bytes(limit - ahead, 0x55));
        ASSERT_TRUE(splitter.split().empty());
        const Bytes frame = buildFrame(183, Bytes(0x7FFE, 0x55));
        std::vector<Packet> packets;
        for (std::size_t from = 0; from < frame.size(); from += 1000) {
            splitter.append(ByteView(frame).subspan(from, std::min<std::size_t>(1000, frame.size() - from)));
            for (Packet& packet : splitter.split()) packets.push_back(std::move(packet));
        }
        EXPECT_EQ(packets, (std::vector<Packet>{{183, Bytes(0x7FFE, 0x55)}}));
        EXPECT_TRUE(splitter.stream().empty());
    }
}

}  // namespace
}  // namespace zvr
