// The device's memory card: one file at a time is opened, written or read, and closed.
#include "services/services.h"

namespace zvr::python {

namespace {

// The type is looked at when the length is already there: what has no length fails for that.
Field checkedText(std::string argument) {
    return {std::move(argument), "text", [](Payload& data, py::handle value) {
                checkIsTextOrList(value);
                data.extend(codePoints(value));
            }};
}

Field oneMoreThan(std::string argument) {
    return {std::move(argument), "1 +",
            [](Payload& data, py::handle value) { data.add(borrow(value.ptr()) + py::int_(1)); }};
}

// The first byte is the device's count, which nobody looks at.
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
    const std::vector<Check> nameCheck{{{}, {"filename"}, checkIsTextOrList}};
    Feature card(package, "SDCard", "The memory card of a device.", Feature::Base::none);
    // clang-format off
    card.rows({
        {"_SD_open", {}, {}, SD_OPEN, {}, status(0), "Makes the card ready."},
        {"_SD_close", {}, {}, SD_CLOSE, {}, status(0), "Lets go of the card."},
        {"SD_getStorage", {}, {}, SD_GET_CAPACITY, {},
            numberAt<std::uint32_t>(0, "capacity of the card, in the device's unit"), "Reads the capacity."},
        {"SD_openFile", {name, mode}, nameCheck, SD_OPEN_FILE, {u8("mode"), length("filename"), text("filename")},
            status(0), "Opens a file."},
        {"SD_writeFile", {content}, {}, SD_WRITE_FILE, {length("write_data"), checkedText("write_data")}, status(0),
            "Writes to the open file."},
        {"SD_readFile", {count}, {}, SD_READ_FILE, {oneMoreThan("byte_to_read")}, characters(),
            "Reads from the open file. A refusal is not told from content."},
        {"SD_closeFile", {}, {}, SD_CLOSE_FILE, {}, status(0), "Closes the open file."},
    });
    // clang-format on
}

}  // namespace zvr::python
