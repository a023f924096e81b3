// The SD card: files in memory, one of them open at a time.
#include <algorithm>
#include <map>
#include <memory>

#include "device/modules.h"

namespace zvr::sim {

namespace {

constexpr std::size_t kilobyte = 1024;
constexpr std::size_t capacity = std::size_t{8} * kilobyte * kilobyte * kilobyte;
constexpr std::size_t memory = 64 * kilobyte * kilobyte;  // what a test may fill of it

enum Mode : std::uint8_t { readMode = 0, writeMode = 1, appendMode = 2 };

class Card {
public:
    bool isOpen() const { return open_; }
    void setOpen(bool open) {
        open_ = open;
        file_ = nullptr;
    }

    Status openFile(std::uint8_t mode, const std::string& name) {
        if (!open_ || file_ != nullptr) return Status::notEnabled;
        if (mode > appendMode || name.empty()) return Status::core;
        if (mode == readMode && !files_.contains(name)) return Status::core;
        file_ = &files_[name];
        if (mode == writeMode) file_->clear();
        mode_ = mode;
        place_ = 0;
        return Status::ok;
    }

    Status write(ByteView data) {
        if (file_ == nullptr || mode_ == readMode) return Status::notEnabled;
        if (used() + data.size() > memory) return Status::core;
        file_->insert(file_->end(), data.begin(), data.end());
        return Status::ok;
    }

    ByteView read(std::size_t count) {
        if (file_ == nullptr || mode_ != readMode) return {};
        const ByteView part = ByteView(*file_).subspan(place_).first(std::min(count, file_->size() - place_));
        place_ += part.size();
        return part;
    }

    Status closeFile() {
        if (file_ == nullptr) return Status::notEnabled;
        file_ = nullptr;
        return Status::ok;
    }

    std::size_t free() const { return capacity - used(); }

private:
    std::size_t used() const {
        std::size_t bytes = 0;
        for (const auto& [name, file] : files_) bytes += file.size();
        return bytes;
    }

    bool open_ = false;
    std::map<std::string, Bytes> files_;
    Bytes* file_ = nullptr;  // the open one
    std::uint8_t mode_ = readMode;
    std::size_t place_ = 0;
};

void addFiles(Device& device, const std::shared_ptr<Card>& card) {
    device.on(SD_OPEN_FILE, [card](Request r) {
        const std::uint8_t mode = r.u8();
        const ByteView name = r.lastCounted();
        return reply(card->openFile(mode, std::string(name.begin(), name.end())));
    });
    device.on(SD_WRITE_FILE, [card](Request r) { return reply(card->write(r.lastCounted())); });
    // The request holds one more than the number of bytes wanted.
    device.on(SD_READ_FILE, [card](Request r) {
        const std::size_t wanted = r.u8();
        const ByteView part = card->read(wanted == 0 ? 0 : wanted - 1);
        return reply(static_cast<std::uint8_t>(part.size()), part);
    });
    device.on(SD_CLOSE_FILE, [card](Request) { return reply(card->closeFile()); });
}

}  // namespace

void addSdCard(Device& device) {
    const auto card = std::make_shared<Card>();
    device.on(SD_OPEN, [card](Request) {
        if (card->isOpen()) return reply(Status::notEnabled);
        card->setOpen(true);
        return reply(Status::ok);
    });
    device.on(SD_CLOSE, [card](Request) {
        if (!card->isOpen()) return reply(Status::notEnabled);
        card->setOpen(false);
        return reply(Status::ok);
    });
    device.on(SD_GET_CAPACITY, [card](Request) {
        return reply(static_cast<std::uint32_t>(card->isOpen() ? card->free() / kilobyte : 0));
    });
    addFiles(device, card);
    device.onReboot([card] { card->setOpen(false); });
}

}  // namespace zvr::sim
