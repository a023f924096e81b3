// The device's memory card: one file at a time is opened, written or read, and closed.
#include "services/services.h"

namespace zvr::python {

namespace {

// The length is read before the type check, so an object without len() raises TypeError there.
constexpr Encoding checkedText{"text", [](Payload& data, py::handle value, int) {
                                   checkIsTextOrList(value, "value");
                                   data.extend(codePoints(value));
                               }};
constexpr Encoding oneMore{"1 +",
                           [](Payload& data, py::handle value, int) { data.add(borrow(value.ptr()) + py::int_(1)); }};

// The first byte is the device's count, which is ignored.
Reply characters() {
    return {[](py::handle, const Bytes& data) -> Object {
                byteOf(data, 0);
                py::list result;
                for (const std::uint8_t code : ByteView(data).subspan(1)) {
                    result.append(own(PyUnicode_FromOrdinal(code)));
                }
                return result;
            },
            {"list[str]", "one character per byte read", "the device"}};
}

}  // namespace

void defineSdCard(Package& package) {
    const Parameter name{"filename", "str | list[str]", "name of the file, up to 255 characters of one byte"};
    const Parameter mode{"mode", "int", "how the file is opened, in the device's numbering, 0 to 255"};
    const Parameter content{"write_data", "str | list[str]", "text, or single characters; up to 255 of one byte each"};
    const Parameter count{"byte_to_read", "int", "bytes to read, 0 to 254"};
    const std::vector<Check> nameCheck{check(checkIsTextOrList, name)};
    Feature card(package, "SDCard", "The memory card of a device.", Feature::Base::none);
    card.operations(
        {{.name = "_SD_open", .sends = SD_OPEN, .reply = status(0), .doc = "Opens the card."},
         {.name = "_SD_close", .sends = SD_CLOSE, .reply = status(0), .doc = "Closes the card."},
         {.name = "SD_getStorage",
          .sends = SD_GET_CAPACITY,
          .reply = numberAt<std::uint32_t>(0, "capacity of the card, in the device's unit"),
          .doc = "Reads the capacity."},
         {.name = "SD_openFile",
          .parameters = {name, mode},
          .checks = nameCheck,
          .sends = SD_OPEN_FILE,
          .fields = {mode | u8, name | length, name | text},
          .reply = status(0),
          .doc = "Opens a file."},
         {.name = "SD_writeFile",
          .sends = SD_WRITE_FILE,
          .fields = {content | length, content | checkedText},
          .reply = status(0),
          .doc = "Writes to the open file."},
         {.name = "SD_readFile",
          .sends = SD_READ_FILE,
          .fields = {count | oneMore},
          .reply = characters(),
          .doc = "Reads from the open file. A refusal cannot be distinguished from content."},
         {.name = "SD_closeFile", .sends = SD_CLOSE_FILE, .reply = status(0), .doc = "Closes the open file."}});
}

}  // namespace zvr::python
