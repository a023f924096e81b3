#include "buses/can_frame.h"

#include <structmember.h>

#include "buses/buses.h"

namespace zvr::python {

namespace {

// Bits of the identifier word: the upper 11 bits of an identifier at the top, the flags below, and the lower 18 bits of
// an extended one at the bottom.
constexpr std::uint32_t remoteBit = 1U << 20, extendedBit = 1U << 19, lowBits = (1U << 18) - 1,
                        allBits = (1U << 29) - 1;
constexpr int standardShift = 21, extendedShift = 3;
constexpr std::uint32_t topBits = ~0U << standardShift;

enum class Slot : std::uint8_t { id, extended, remote, data, idInList, frameInList };
constexpr std::array fieldNames{"id", "extended_id", "remote", "data", "id_in_list", "frame_in_list"};

/// The fields that a frame has as objects.
struct Fields {
    struct Entry {
        PyObject* value = nullptr;  ///< null if the field is missing
        bool isWire = false;        ///< whether it has yet to be decoded from the bytes of the wire
    };
    std::array<Entry, fieldNames.size()> entries{};

    Entry& operator[](Slot slot) { return entries[static_cast<std::size_t>(slot)]; }
};

struct Holder {
    PyObject_HEAD CanFrame wire;
    Fields* fields;  // null while all fields are undecoded
    PyObject *dictionary, *weakReferences;
};

PyTypeObject* type = nullptr;  // never released

Holder* holderOf(PyObject* object) { return reinterpret_cast<Holder*>(object); }

Holder& checked(py::handle self) {
    if (!CanFrameType::is(self)) refuseType("self", "a CANFrame", self);
    return *holderOf(self.ptr());
}

// From here on the object can be part of a cycle.
void track(PyObject* object) {
    if (PyObject_GC_IsTracked(object) == 0) PyObject_GC_Track(object);
}

Fields& fieldsOf(Holder& holder) {
    if (holder.fields == nullptr) {
        holder.fields = std::make_unique<Fields>().release();  // the object owns it
        for (Fields::Entry& entry : holder.fields->entries) entry.isWire = true;
        track(reinterpret_cast<PyObject*>(&holder));
    }
    return *holder.fields;
}

void clearFields(Holder& holder) {
    const std::unique_ptr<Fields> fields(std::exchange(holder.fields, nullptr));
    if (!fields) return;
    for (const Fields::Entry& entry : fields->entries) Py_XDECREF(entry.value);
}

PyObject* create(PyTypeObject* wanted, PyObject* /*arguments*/, PyObject* /*named*/) {
    PyObject* const object = wanted->tp_alloc(wanted, 0);
    if (object == nullptr) return nullptr;
    new (&holderOf(object)->wire) CanFrame();
    holderOf(object)->fields = new (std::nothrow) Fields;  // NOLINT: the object owns it
    if (holderOf(object)->fields != nullptr) return object;
    Py_DECREF(object);
    return PyErr_NoMemory();
}

// Tracked by the GC, since an added attribute may refer to the frame.
int setAdded(PyObject* self, PyObject* name, PyObject* value) {
    track(self);
    return PyObject_GenericSetAttr(self, name, value);
}
PyObject* getAdded(PyObject* self, void* context) {
    track(self);
    return PyObject_GenericGetDict(self, context);
}

int traverse(PyObject* self, visitproc visit, void* arg) {
    Py_VISIT(Py_TYPE(self));
    Py_VISIT(holderOf(self)->dictionary);
    if (holderOf(self)->fields != nullptr) {
        for (const Fields::Entry& entry : holderOf(self)->fields->entries) Py_VISIT(entry.value);
    }
    return 0;
}

int clear(PyObject* self) {
    Holder& holder = *holderOf(self);
    Py_CLEAR(holder.dictionary);
    if (holder.fields != nullptr) {
        for (Fields::Entry& entry : holder.fields->entries) Py_CLEAR(entry.value);
    }
    return 0;
}

void destroy(PyObject* self) {
    Holder& holder = *holderOf(self);
    if (PyObject_GC_IsTracked(self) != 0) PyObject_GC_UnTrack(self);
    if (holder.weakReferences != nullptr) PyObject_ClearWeakRefs(self);
    Py_CLEAR(holder.dictionary);
    clearFields(holder);
    PyTypeObject* const own = Py_TYPE(self);
    own->tp_free(self);
    Py_DECREF(own);
}

Object fromWire(const CanFrame& wire, Slot slot) {
    switch (slot) {
        case Slot::id: return py::int_(wire.id());
        case Slot::extended: return py::bool_(wire.extended());
        case Slot::remote: return py::bool_(wire.remote());
        case Slot::data: return toList(wire.data);
        case Slot::idInList: return toList(wire.idBytes);
        case Slot::frameInList: break;
    }
    py::list list = toList(wire.idBytes);
    for (const std::uint8_t byte : wire.data) list.append(byte);
    return list;
}

// A list is made once and then belongs to the frame.
Object get(py::handle self, Slot slot) {
    Holder& holder = checked(self);
    const bool isList = slot >= Slot::data;
    if (holder.fields == nullptr && !isList) return fromWire(holder.wire, slot);
    Fields::Entry& entry = fieldsOf(holder)[slot];
    if (entry.isWire) {
        entry.value = fromWire(holder.wire, slot).release().ptr();
        entry.isWire = false;
    }
    if (entry.value == nullptr) {
        throw py::attribute_error(std::string("the frame has no '") + fieldNames[static_cast<std::size_t>(slot)] + "'");
    }
    return borrow(entry.value);
}

// A null value deletes the field.
void set(py::handle self, Slot slot, PyObject* value) {
    Fields::Entry& entry = fieldsOf(checked(self))[slot];
    PyObject* const before = std::exchange(entry.value, Py_XNewRef(value));
    entry.isWire = false;
    Py_XDECREF(before);
}

py::list regularize(const Object& values) {
    py::list list;
    eachOf(values, "data", [&](const Object& value) {
        list.append(value);
        return list.size() < CanFrame::dataBytes;
    });
    while (list.size() < CanFrame::dataBytes) list.append(0);
    return list;
}

// The identifier word of the current fields.
std::uint32_t wordOf(py::handle self) {
    const Object number = integerOf(attribute(self, "id"), "id_");
    std::uint32_t word = 0;
    if (truthOf(attribute(self, "extended_id"))) {
        const auto identifier = numberOf<std::uint32_t>(number & py::int_(allBits));
        word = (identifier & ~lowBits) << extendedShift | (identifier & lowBits) | extendedBit;
    } else {
        if (number < py::int_(0) || number >= py::int_(1 << (32 - standardShift))) {
            throw std::overflow_error("id_: a standard identifier has 11 bits");
        }
        word = numberOf<std::uint32_t>(number) << standardShift;
    }
    return truthOf(attribute(self, "remote")) ? word | remoteBit : word;
}

void setId(py::handle self) {
    Bytes bytes;
    appendBigEndian(bytes, wordOf(self));
    const py::list word = toList(bytes);
    setAttribute(self, "id_in_list", word);
    const Object data = attribute(self, "data");
    setAttribute(self, "frame_in_list", own(entering([&] { return PyNumber_Add(word.ptr(), data.ptr()); })));
}

void construct(py::handle self, const Object& number, const Object& extended, const Object& isRemote,
               const Object& values) {
    checked(self);
    setAttribute(self, "id", number);
    setAttribute(self, "extended_id", extended);
    setAttribute(self, "remote", isRemote);
    setAttribute(self, "data", callMethod(self, "regularizeData", values));
    callMethod(self, "setID");
}

// Two bytes are enough for a standard identifier and its flags.
Object fromBytes(py::handle cls, const Object& values) {
    py::list list;
    eachOf(values, "u8_list", [&](const Object& value) {
        list.append(value);
        return list.size() < CanFrame::wireBytes;
    });
    const auto part = [&](Py_ssize_t from, Py_ssize_t to) { return own(PyList_GetSlice(list.ptr(), from, to)); };
    const Bytes word = bytesOf(part(0, 4), "u8_list");
    const bool isExtended = (byteOf(word, 1) >> 3 & 1) != 0, isRemote = (word[1] >> 4 & 1) != 0;
    const std::uint32_t high = isExtended ? readBigEndian<std::uint32_t>(word) : 0;
    const std::uint32_t number = isExtended ? (high & topBits) >> extendedShift | (high & lowBits)
                                            : readBigEndian<std::uint16_t>(slice(word, 0, 2)) >> 5;
    const py::int_ identifier(number);
    const py::bool_ extended(isExtended), remoteFlag(isRemote);
    if (list.size() <= 4) return callObject(cls, identifier, extended, remoteFlag);
    return callObject(cls, identifier, extended, remoteFlag, part(4, CanFrame::wireBytes));
}

py::str textOfFrame(py::handle self) {
    return py::str("CANFrame(id={}, extended_id={}, remote={}, data={})")
        .format(attribute(self, "id"), attribute(self, "extended_id"), attribute(self, "remote"),
                attribute(self, "data"));
}

// The values that two frames are compared by.
py::tuple saying(py::handle self) {
    return py::make_tuple(attribute(self, "id"), truthOf(attribute(self, "extended_id")),
                          truthOf(attribute(self, "remote")), py::tuple(attribute(self, "data")));
}

Object equals(py::handle self, const Object& other) {
    const Holder& mine = checked(self);
    if (!CanFrameType::is(other)) return borrow(Py_NotImplemented);
    const Holder& others = *holderOf(other.ptr());
    if (mine.fields == nullptr && others.fields == nullptr) {
        return py::bool_(mine.wire.idBytes == others.wire.idBytes && mine.wire.data == others.wire.data);
    }
    const py::tuple says = saying(self), othersSay = saying(other);
    const int same = entering([&] { return PyObject_RichCompareBool(says.ptr(), othersSay.ptr(), Py_EQ); });
    if (same < 0) throw py::error_already_set();
    return py::bool_(same != 0);
}

// The existing fields, and attributes that a user has added.
py::dict stateOf(py::handle self) {
    checked(self);
    py::dict state;
    for (const char* name : fieldNames) {
        if (const Object value = attributeOrNothing(self, name)) state[name] = value;
    }
    state.attr("update")(attribute(self, "__dict__"));
    return state;
}

// The message object of the Python package `can`.
Object toMessage(py::handle self) {
    const bool isRemote = truthOf(attribute(self, "remote"));
    const Object content = isRemote ? Object(py::none()) : Object(toBytes(bytesOf(attribute(self, "data"), "data")));
    return attribute(py::module_::import("can"), "Message")(
        py::arg("arbitration_id") = attribute(self, "id"),
        py::arg("is_extended_id") = truthOf(attribute(self, "extended_id")), py::arg("is_remote_frame") = isRemote,
        py::arg("dlc") = CanFrame::dataBytes, py::arg("data") = content, py::arg("check") = true);
}

Object fromMessage(py::handle cls, const Object& message) {
    if (truthOf(attribute(message, "is_error_frame"))) throw py::value_error("an error frame is no frame to be sent");
    return callObject(cls, attribute(message, "arbitration_id"), attribute(message, "is_extended_id"),
                      attribute(message, "is_remote_frame"), attribute(message, "data"));
}

Object makeType() {
    static PyMemberDef members[] = {
        {"__dictoffset__", T_PYSSIZET, offsetof(Holder, dictionary), READONLY, nullptr},
        {"__weaklistoffset__", T_PYSSIZET, offsetof(Holder, weakReferences), READONLY, nullptr},
        {nullptr, 0, 0, 0, nullptr},
    };
    static PyGetSetDef fields[] = {
        {"__dict__", getAdded, PyObject_GenericSetDict, nullptr, nullptr},
        {nullptr, nullptr, nullptr, nullptr, nullptr},
    };
    PyType_Slot slots[] = {
        {Py_tp_new, reinterpret_cast<void*>(create)},
        {Py_tp_dealloc, reinterpret_cast<void*>(destroy)},
        {Py_tp_traverse, reinterpret_cast<void*>(traverse)},
        {Py_tp_clear, reinterpret_cast<void*>(clear)},
        {Py_tp_setattro, reinterpret_cast<void*>(setAdded)},
        {Py_tp_members, members},
        {Py_tp_getset, fields},
        {Py_tp_doc, const_cast<char*>("A frame of a CAN bus. Frames with the same identifier, flags and data are "
                                      "equal.")},
        {0, nullptr},
    };
    PyType_Spec spec{"pyzvr.CANFrame", sizeof(Holder), 0, Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE | Py_TPFLAGS_HAVE_GC,
                     slots};
    return own(PyType_FromSpec(&spec));
}

/// A method that takes the class.
void addClassMethod(const Object& cls, Definition definition) {
    const Definition& kept = *keep(std::move(definition));
    const Object method = makeOperation(kept, Form::method, "CANFrame");
    py::setattr(cls, kept.name.c_str(),
                callObject(py::handle(reinterpret_cast<PyObject*>(&PyClassMethod_Type)), method));
}

}  // namespace

CanFrame::CanFrame(ByteView wire) {
    const auto given = readBigEndian<std::uint32_t>(slice(wire, 0, 4));
    const std::uint32_t meant = topBits | remoteBit | extendedBit | ((given & extendedBit) != 0 ? lowBits : 0);
    Bytes bytes;
    appendBigEndian(bytes, given & meant);
    std::ranges::copy(bytes, idBytes.begin());
    std::ranges::copy(wire.subspan(4, std::min(dataBytes, wire.size() - 4)), data.begin());
}

bool CanFrame::extended() const { return (word() & extendedBit) != 0; }
bool CanFrame::remote() const { return (word() & remoteBit) != 0; }
std::uint32_t CanFrame::id() const {
    const std::uint32_t high = word() & topBits;
    return extended() ? high >> extendedShift | (word() & lowBits) : high >> standardShift;
}

Object CanFrameType::make(const CanFrame& frame) {
    // Untracked by the GC until it has field objects, since it refers to nothing before.
    Holder* const holder = PyObject_GC_New(Holder, type);
    if (holder == nullptr) throw py::error_already_set();
    new (&holder->wire) CanFrame(frame);
    holder->fields = nullptr;
    holder->dictionary = holder->weakReferences = nullptr;
    return py::reinterpret_steal<Object>(reinterpret_cast<PyObject*>(holder));
}

bool CanFrameType::is(py::handle object) { return PyObject_TypeCheck(object.ptr(), type) != 0; }

CanFrame CanFrameType::of(py::handle object) {
    const Holder& holder = checked(object);
    if (holder.fields == nullptr) return holder.wire;
    const Bytes bytes = bytesOf(attribute(object, "frame_in_list"), "frame_in_list");
    CanFrame frame;
    std::ranges::copy(slice(bytes, 0, frame.idBytes.size()), frame.idBytes.begin());
    const ByteView rest = restOf(bytes, frame.idBytes.size());
    std::ranges::copy(rest.first(std::min(rest.size(), CanFrame::dataBytes)), frame.data.begin());
    return frame;
}

void defineCanFrame(Package& package) {
    const Object cls = makeType();
    type = reinterpret_cast<PyTypeObject*>(Py_NewRef(cls.ptr()));
    package.constant("CANFrame", cls);
    ClassMaker frame(cls);
    const Parameter values{"data", "Sequence[int]", "any number of bytes"};
    const Parameter other{"other", "object", ""};
    frame
        .method({.name = "__init__",
                 .parameters = {{"id_", "int", "identifier, 11 bits, or 29 where `extended_id`"},
                                {"extended_id", "bool", "whether the identifier has 29 bits", "False"},
                                {"remote", "bool", "whether it is a remote frame", "False"},
                                {"data", "Sequence[int]", "bytes; they are filled with zeros, and cut, to 8", "()"}},
                 .doc = "Makes a frame. Values that are not bytes are kept, and fail when converted to bytes.",
                 .raises = {"OverflowError: a standard identifier of more than 11 bits",
                            "TypeError: the identifier is not an integer"},
                 .body = construct})
        .method({.name = "setID",
                 .doc = "Updates `id_in_list` and `frame_in_list` from the other fields.",
                 .raises = {"OverflowError: a standard identifier of more than 11 bits"},
                 .body = setId})
        .method({.name = "regularizeData",
                 .parameters = {values},
                 .doc = "Pads or cuts to 8 entries.",
                 .returns = {"list[int]", "8 entries"},
                 .body = [](py::handle, const Object& values) { return regularize(values); }});
    const FieldDoc fields[] = {
        {"id", "int", "Identifier. Call `setID` after a change."},
        {"extended_id", "bool", "Whether the identifier has 29 bits. Call `setID` after a change."},
        {"remote", "bool", "Whether it is a remote frame. Call `setID` after a change."},
        {"data", "list[int]", "The 8 bytes. Call `setID` after a change."},
        {"id_in_list", "list[int]", "The identifier with its flags as the 4 bytes of the wire."},
        {"frame_in_list", "list[int]", "The 12 bytes of the wire: `id_in_list` and `data`."}};
    for (std::size_t i = 0; i < fieldNames.size(); ++i) {
        const auto slot = static_cast<Slot>(i);
        frame.property(
            fields[i], [slot](py::handle self) { return get(self, slot); },
            [slot](py::handle self, const Object& value) { set(self, slot, value.ptr()); },
            [slot](py::handle self) {
                get(self, slot);
                set(self, slot, nullptr);
            });
    }
    addClassMethod(
        cls,
        {.name = "fromU8List",
         .parameters =
             {{"u8_list", "Sequence[int]",
               "12 bytes of the wire; fewer for less data; two are enough for an 11-bit identifier without data"}},
         .doc = "Makes a frame of the bytes of the wire.",
         .returns = {"Self", "a new frame of this class"},
         .raises = {"IndexError: fewer than 2 bytes", "struct.error: fewer than 4 bytes of an identifier of 29 bits"},
         .body = fromBytes});
    addClassMethod(cls, {.name = "fromMessage",
                         .parameters = {{"message", "Any", "a can.Message"}},
                         .doc = "Makes a frame of a message of the package `can`.",
                         .returns = {"Self", "a new frame of this class"},
                         .raises = {"ValueError: it is an error frame"},
                         .body = fromMessage});
    frame
        .method({.name = "toMessage",
                 .doc = "The frame as a message of the package `can`, 8 bytes long.",
                 .returns = {"Any", "a can.Message"},
                 .raises = {"ImportError: the package is not installed"},
                 .body = toMessage})
        .method({.name = "__eq__",
                 .parameters = {other},
                 .doc = "Whether two frames have the same content.",
                 .returns = {"bool"},
                 .body = equals})
        .method({.name = "__hash__",
                 .doc = "Hashes the content.",
                 .returns = {"int"},
                 .body = [](py::handle self) { return py::hash(saying(self)); }})
        .method({.name = "__reduce__",
                 .doc = "For the modules copy and pickle.",
                 .returns = {"tuple[Any, ...]"},
                 .body = [](py::handle self) -> Object {
                     return py::make_tuple(attribute(py::module_::import("copyreg"), "__newobj__"),
                                           py::make_tuple(py::type::of(borrow(self.ptr()))), stateOf(self));
                 }})
        .method({.name = "__setstate__",
                 .parameters = {{"state", "dict[str, Any]", "fields by name"}},
                 .doc = "For the modules copy and pickle.",
                 .body =
                     [](py::handle self, const Object& state) {
                         for (const auto& [name, value] : py::dict(state)) py::setattr(self, name, value);
                     }})
        .method({.name = "__str__", .doc = "The frame as text.", .returns = {"str"}, .body = textOfFrame})
        .method({.name = "__repr__", .doc = "The frame as text.", .returns = {"str"}, .body = textOfFrame});
}

}  // namespace zvr::python
