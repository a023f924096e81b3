#include "analog/rows.h"

#include <algorithm>
#include <cstring>
#include <deque>

#include "analog/analog.h"
#include "core/engine/never_destroyed.h"
#include "core/engine/sample_memory.h"
#include "device/queue_face.h"
#include "device/row_fifo.h"
#include "python/values.h"

namespace zvr::python {

namespace {

/// The float objects of all codes of a scale, made on first use.
class Floats {
public:
    explicit Floats(std::shared_ptr<const Scale16> scale) : scale_(std::move(scale)), objects_(65536) {}

    PyObject* operator()(std::int16_t code) {
        PyObject*& object = objects_[static_cast<std::uint16_t>(code)];
        if (object == nullptr) {
            object = PyFloat_FromDouble((*scale_)(code));
            if (object == nullptr) throw py::error_already_set();
        }
        return Py_NewRef(object);
    }

    ~Floats() {
        for (PyObject* object : objects_) Py_XDECREF(object);
    }
    Floats(const Floats&) = delete;
    Floats& operator=(const Floats&) = delete;

    /// Cached for the last few scales.
    static std::shared_ptr<Floats> of(const std::shared_ptr<const Scale16>& scale) {
        constexpr std::size_t kept = 4;
        static auto& recent = neverDestroyed<std::deque<std::shared_ptr<Floats>>>();
        const auto known = std::ranges::find(recent, scale, [](const auto& each) { return each->scale_; });
        auto floats = known == recent.end() ? std::make_shared<Floats>(scale) : *known;
        if (known == recent.begin() && known != recent.end()) return floats;
        std::erase(recent, floats);
        recent.push_front(floats);
        if (recent.size() > kept) recent.pop_back();
        return floats;
    }

private:
    const std::shared_ptr<const Scale16> scale_;
    std::vector<PyObject*> objects_;
};

/// Iterates over the runs of one chip select row by row.
class Cursor {
public:
    explicit Cursor(const std::vector<RowRun>& runs) : next_(runs.begin()), end_(runs.end()) { enter(); }

    /// Rows left of the current run, all of one width.
    std::size_t rows() const { return left_; }
    Py_ssize_t columns() const { return next_ == end_ ? 0 : next_->layout.columns; }

    /// Writes the next row in place of these items, which are floats or null; returns the item after it.
    PyObject** fill(PyObject** item) {
        if (next_ == end_) return item;
        PyObject** const behind = item + next_->layout.columns;
        if (floats_ != nullptr) {
            for (Floats& floats = *floats_; item != behind; bytes_ += 2) replace(*item++, floats(read16(bytes_)));
            return behind;
        }
        convertRows(next_->layout, bytes_, 1, values_.data(), values_.size());
        bytes_ += next_->layout.rowBytes();
        for (const double value : values_) {
            PyObject* const object = PyFloat_FromDouble(value);
            if (object == nullptr) throw py::error_already_set();
            replace(*item++, object);
        }
        return behind;
    }

    /// Skips this many rows.
    void advance(std::size_t rows) {
        if (next_ == end_ || (left_ -= rows) != 0) return;
        ++next_;
        enter();
    }

private:
    static void replace(PyObject*& item, PyObject* object) { Py_XDECREF(std::exchange(item, object)); }

    void enter() {
        floats_ = nullptr;
        left_ = RowQueue::noLimit;
        if (next_ == end_) return;
        bytes_ = next_->bytes;
        left_ = next_->rows;
        const RowLayout& layout = next_->layout;
        if (layout.sample == RowLayout::Sample::scaled16) {
            floats_ = Floats::of(layout.scale);
        } else {
            values_.resize(static_cast<std::size_t>(layout.columns));
        }
    }

    std::vector<RowRun>::const_iterator next_, end_;
    const std::uint8_t* bytes_ = nullptr;
    std::size_t left_ = 0;
    std::shared_ptr<Floats> floats_;
    std::vector<double> values_;
};

// Rows put by users are unpacked item by item, whatever their type.
py::list spreadOut(const RowRuns& runs, std::size_t rows) {
    py::list result;
    for (std::size_t row = 0; row < rows; ++row) result.append(py::list());
    for (const std::vector<RowRun>& chipSelect : runs) {
        std::size_t row = 0;
        for (const RowRun& run : chipSelect) {
            const py::list items = run.object ? py::list() : toLists({{run}}, run.rows);
            for (std::size_t i = 0; i < run.rows; ++i, ++row) {
                callMethod(result[row], "extend", run.object ? objectOf(run) : Object(items[i]));
            }
        }
    }
    return result;
}

std::span<PyObject*> itemsOf(PyObject* list) {
    return {PySequence_Fast_ITEMS(list), static_cast<std::size_t>(PyList_GET_SIZE(list))};
}

// Whether nobody else has a list of rows, or one of its rows, and they hold only floats: no code runs while it is
// filled anew.
bool isSpare(const py::list& rows) {
    return Py_REFCNT(rows.ptr()) == 1 && std::ranges::all_of(itemsOf(rows.ptr()), [](PyObject* row) {
               return Py_REFCNT(row) == 1 && PyList_CheckExact(row) &&
                      std::ranges::all_of(itemsOf(row), [](PyObject* item) { return PyFloat_CheckExact(item); });
           });
}

}  // namespace

py::list toLists(const RowRuns& runs, std::size_t rows, py::list result) {
    for (const std::vector<RowRun>& chipSelect : runs) {
        for (const RowRun& run : chipSelect) {
            if (run.object) return spreadOut(runs, rows);
        }
    }
    const CollectorPause pause;
    if (result.size() != rows || !isSpare(result)) {
        result.release().dec_ref();  // before the next is begun: what it holds may run code when it goes
        result = py::list(rows);
    }
    std::vector<Cursor> cursors(runs.begin(), runs.end());
    for (std::size_t row = 0; row < rows;) {
        std::size_t count = rows - row;
        Py_ssize_t columns = 0;
        for (const Cursor& cursor : cursors) {
            count = std::min(count, cursor.rows());
            columns += cursor.columns();
        }
        for (const std::size_t end = row + count; row < end; ++row) {
            PyObject*& list = PySequence_Fast_ITEMS(result.ptr())[row];
            if (list == nullptr || PyList_GET_SIZE(list) != columns) {
                Py_XSETREF(list, PyList_New(columns));
                if (list == nullptr) throw py::error_already_set();
            }
            PyObject** item = PySequence_Fast_ITEMS(list);
            for (Cursor& cursor : cursors) item = cursor.fill(item);
        }
        for (Cursor& cursor : cursors) cursor.advance(count);
    }
    return result;
}

void writeRows(const RowsTaken& taken, double* out) {
    for (const std::vector<RowRun>& chipSelect : taken.runs) {
        double* place = out;
        for (const RowRun& run : chipSelect) {
            convertRows(run.layout, run.bytes, run.rows, place, taken.columns);
            place += run.rows * taken.columns;
        }
        if (!chipSelect.empty()) out += chipSelect.front().layout.columns;
    }
}

namespace {

using HeldBlock = std::shared_ptr<SampleBlock>;

Object viewOf(py::handle block) { return own(PyMemoryView_FromObject(block.ptr())); }

Object listOf(py::handle block) {
    native<SampleBlock>(block);
    return callMethod(viewOf(block), "tolist");
}

py::tuple channelsOf(const SampleBlock& block) {
    const std::size_t count = block.chipSelectCount;
    const std::size_t width = count == 0 ? block.columns : block.columns / count;
    py::tuple channels(block.columns);
    for (std::size_t i = 0; i < block.columns; ++i) {
        const std::size_t first = count == 0 ? 0 : block.chipSelects[std::min(i / width, count - 1)] * width;
        channels[i] = py::int_(count == 0 ? i : first + i % width);
    }
    return channels;
}

std::string textOf(const SampleBlock& block) {
    std::string result = py::str("({}, {}), ").format(block.rows, block.columns);
    result += block.place.rate > 0 ? std::string(py::str("{:g} Hz").format(block.place.rate)) : "rate unknown";
    result += ", first row " + std::to_string(block.place.first);
    if (block.place.droppedBefore != 0) result += ", " + std::to_string(block.place.droppedBefore) + " dropped before";
    return result + ", V";
}

std::string htmlOf(const SampleBlock& block) {
    constexpr std::size_t shown = 5;  // rows at the beginning, and as many at the end
    std::string html = "<table><caption>SampleBlock " + textOf(block) + "</caption><thead><tr><th>row</th>";
    for (const py::handle channel : channelsOf(block)) html += "<th>" + std::string(py::str(channel)) + "</th>";
    html += "</tr></thead><tbody>";
    for (std::size_t row = 0; row < block.rows; ++row) {
        if (row == shown && block.rows > 2 * shown) {
            row = block.rows - shown;
            html += "<tr><td colspan=\"" + std::to_string(block.columns + 1) + "\">...</td></tr>";
        }
        html += "<tr><th>" + std::to_string(block.place.first + row) + "</th>";
        for (std::size_t i = 0; i < block.columns; ++i) {
            const py::float_ value(block.values.get()[row * block.columns + i]);
            html += "<td>" + std::string(py::str("{:g}").format(value)) + "</td>";
        }
        html += "</tr>";
    }
    return html + "</tbody></table>";
}

HeldBlock rowsOf(const HeldBlock& block, py::handle slice) {
    Py_ssize_t start = 0, stop = 0, step = 0;
    if (PySlice_Unpack(slice.ptr(), &start, &stop, &step) != 0) throw py::error_already_set();
    if (step != 1) {
        throw py::value_error("a block has slices of consecutive rows only, not a step of " + std::to_string(step) +
                              "; numpy.asarray(block) has all others");
    }
    const Py_ssize_t count = PySlice_AdjustIndices(static_cast<Py_ssize_t>(block->rows), &start, &stop, step);
    auto part = std::make_shared<SampleBlock>(*block);
    part->rows = static_cast<std::size_t>(count);
    part->values = {block->values, block->values.get() + static_cast<std::size_t>(start) * block->columns};
    part->place.first += static_cast<std::uint64_t>(start);
    if (start != 0) part->place.droppedBefore = 0;
    return part;
}

Object itemOf(py::handle self, const Object& key) {
    const auto block = native<SampleBlock>(self);
    if (PySlice_Check(key.ptr())) return py::cast(rowsOf(block, key));
    if (PyTuple_Check(key.ptr())) {
        const bool isPlace = PyTuple_GET_SIZE(key.ptr()) == 2 && PyIndex_Check(PyTuple_GET_ITEM(key.ptr(), 0)) != 0 &&
                             PyIndex_Check(PyTuple_GET_ITEM(key.ptr(), 1)) != 0;
        if (isPlace) return own(PyObject_GetItem(viewOf(self).ptr(), key.ptr()));
    } else if (PyIndex_Check(key.ptr()) != 0) {
        Py_ssize_t row = PyNumber_AsSsize_t(key.ptr(), PyExc_IndexError);
        if (row == -1 && PyErr_Occurred() != nullptr) throw py::error_already_set();
        const auto rows = static_cast<Py_ssize_t>(block->rows);
        if (row < 0) row += rows;
        if (row < 0 || row >= rows) {
            throw py::index_error("row " + std::string(py::str(key)) + " of a block of " + std::to_string(rows));
        }
        py::list values(block->columns);
        const double* from = block->values.get() + static_cast<std::size_t>(row) * block->columns;
        for (std::size_t i = 0; i < block->columns; ++i) values[i] = py::float_(from[i]);
        return values;
    }
    throw py::type_error("a block is indexed by a row, a slice of rows, or a row and a column, not by " +
                         std::string(py::repr(key)) + "; numpy.asarray(block) has all others");
}

// An array shares the memory unless another dtype or a copy is requested.
Object arrayOf(py::handle self, const Object& type, const Object& copy) {
    native<SampleBlock>(self);
    const Object view = pythonObject("numpy", "asarray")(viewOf(self));
    const bool converts = !type.is_none() && !pythonObject("numpy", "dtype")(type).equal(attribute(view, "dtype"));
    if (converts && !copy.is_none() && !isTrue(copy)) {
        throw py::value_error("copy: doubles become other numbers in a copy only");
    }
    if (converts) return callMethod(view, "astype", type);
    return !copy.is_none() && isTrue(copy) ? callMethod(view, "copy") : view;
}

py::tuple stateOf(const SampleBlock& block) {
    const auto* const bytes = reinterpret_cast<const char*>(block.values.get());
    return py::make_tuple(block.rows, block.columns, py::bytes(bytes, block.rows * block.columns * sizeof(double)),
                          block.place.rate, block.place.start, block.place.run, block.place.first,
                          block.place.droppedBefore,
                          py::bytes(reinterpret_cast<const char*>(block.chipSelects.data()), block.chipSelectCount));
}

HeldBlock fromState(const py::tuple& state) {
    constexpr std::size_t members = 9;
    if (state.size() != members) throw py::value_error("this is no state of a SampleBlock");
    auto block = std::make_shared<SampleBlock>();
    block->rows = argument<std::size_t>(state[0], "rows");
    block->columns = argument<std::size_t>(state[1], "columns");
    const std::string bytes = py::cast<py::bytes>(state[2]), chipSelects = py::cast<py::bytes>(state[8]);
    const std::size_t values = bytes.size() / sizeof(double);
    const bool fits =
        block->columns == 0 ? values == 0 : values % block->columns == 0 && values / block->columns == block->rows;
    if (!fits || bytes.size() % sizeof(double) != 0 || chipSelects.size() > block->chipSelects.size()) {
        throw py::value_error("this is no state of a SampleBlock");
    }
    block->values = sampleMemory(values);
    if (values != 0) std::memcpy(block->values.get(), bytes.data(), bytes.size());
    block->place = {argument<double>(state[3], "rate"), argument<double>(state[4], "start"),
                    argument<std::uint64_t>(state[5], "run"), argument<std::uint64_t>(state[6], "first_row"),
                    argument<std::uint64_t>(state[7], "dropped_before")};
    std::ranges::copy(chipSelects, block->chipSelects.begin());
    block->chipSelectCount = static_cast<std::uint8_t>(chipSelects.size());
    return block;
}

void defineContent(ClassMaker& type) {
    const Parameter dtype{"dtype", "Any", "dtype of the array; None for doubles", "None"};
    const Parameter copy{"copy", "bool | None", "whether to copy; None for only if necessary", "None"};
    type.property({"shape", "tuple[int, int]", "Numbers of rows and columns."},
                  [](const SampleBlock& block) -> Object { return py::make_tuple(block.rows, block.columns); })
        .method({.name = "__len__",
                 .doc = "Number of rows.",
                 .returns = {"int"},
                 .body = [](const SampleBlock& block) { return block.rows; }})
        .method({.name = "__getitem__",
                 .parameters = {{"key", "Any", "a row, a slice of consecutive rows, or a row and a column"}},
                 .doc = "A row as a list of floats, rows as a block that shares the memory, or one value.",
                 .returns = {"Any"},
                 .raises = {"IndexError: there is no such row or column", "ValueError: a slice with a step",
                            "TypeError: anything else"},
                 .body = itemOf})
        .method({.name = "__iter__",
                 .doc = "Iterates over the rows as lists of floats.",
                 .returns = {"Iterator[list[float]]"},
                 .body = [](py::handle self) { return own(PyObject_GetIter(listOf(self).ptr())); }})
        .method(
            {.name = "tolist", .doc = "The rows as lists of floats.", .returns = {"list[list[float]]"}, .body = listOf})
        .method({.name = "__array__",
                 .parameters = {dtype, copy},
                 .doc = "The rows as a NumPy array. NumPy is imported only here.",
                 .returns = {"Any", "an array; it shares the memory if it has doubles and no copy is requested"},
                 .raises = {"ImportError: NumPy is not installed", "ValueError: the request needs a copy"},
                 .body = arrayOf})
        .method({.name = "__repr__",
                 .doc = "Shape, rate and place in the stream.",
                 .returns = {"str"},
                 .body = [](const SampleBlock& block) { return "<SampleBlock " + textOf(block) + ">"; }})
        .method({.name = "_repr_html_",
                 .doc = "The first and last rows as a table, for notebooks.",
                 .returns = {"str"},
                 .body = htmlOf})
        .method({.name = "__reduce_ex__",
                 .parameters = {{"protocol", "Any", "as the modules copy and pickle give it"}},
                 .doc = "For the modules copy and pickle.",
                 .returns = {"tuple[Any, ...]"},
                 .body = [](py::handle self, const Object&) -> Object {
                     return py::make_tuple(pythonObject("copyreg", "__newobj__"),
                                           py::make_tuple(py::type::of(borrow(self.ptr()))),
                                           stateOf(*native<SampleBlock>(self)));
                 }});
}

// Row i of the block was taken at start + (first_row + i) / rate.
void definePlace(ClassMaker& type) {
    type.property(
            {"rate", "float", "Rows per second, as reported by the device when streaming was opened; NaN before that."},
            [](const SampleBlock& block) { return block.place.rate; })
        .property({"start", "float",
                   "Time of the first row of the stream, in seconds since 1970 like time.time(). It is the host's "
                   "clock when the first frame was decoded, less the time that its rows took, and never before "
                   "AI_startStreaming: the device sends no time. NaN until data has arrived."},
                  [](const SampleBlock& block) { return block.place.start; })
        .property({"first_row", "int",
                   "Number of the first row since AI_startStreaming, counting dropped rows; over several chip selects, "
                   "that of the first."},
                  [](const SampleBlock& block) { return block.place.first; })
        .property({"dropped_before", "int",
                   "Rows dropped between the previous block and this one because a queue was full; over several chip "
                   "selects, the maximum."},
                  [](const SampleBlock& block) { return block.place.droppedBefore; })
        .property({"units", "str", "Unit of the values, \"V\"."}, [](const SampleBlock&) { return "V"; })
        .property({"channels", "tuple[int, ...]",
                   "Channel of each column; on the chassis those of chip select n begin at n times their number."},
                  [](const SampleBlock& block) { return channelsOf(block); });
}

}  // namespace

void defineSampleBlock(Package& package) {
    auto type =
        py::class_<SampleBlock, HeldBlock>(
            package.module(), "SampleBlock", py::buffer_protocol(),
            "Rows of samples in volts as one contiguous block of doubles, (rows, columns).\n\nIt has "
            "the buffer protocol: memoryview(block) and numpy.asarray(block) see it without a copy. Its rows follow "
            "each other without a gap: row i was taken at start + (first_row + i) / rate.")
            .def_buffer([](SampleBlock& block) {
                const auto width = static_cast<py::ssize_t>(sizeof(double));
                const auto rows = static_cast<py::ssize_t>(block.rows),
                           columns = static_cast<py::ssize_t>(block.columns);
                return py::buffer_info(block.values.get(), width, py::format_descriptor<double>::format(), 2,
                                       {rows, columns}, {columns * width, width});
            })
            .def(py::pickle([](const Object& self) { return stateOf(*native<SampleBlock>(self, "self")); },
                            [](const py::tuple& state) { return fromState(state); }));
    ClassMaker maker(type);
    defineContent(maker);
    definePlace(maker);
    // A block whose constructor has not run has no memory.
    reinterpret_cast<PyHeapTypeObject*>(type.ptr())->as_buffer.bf_getbuffer = [](PyObject* self, Py_buffer* view,
                                                                                 int flags) {
        if (detail::isConstructed(self)) return py::detail::pybind11_getbuffer(self, view, flags);
        view->obj = nullptr;
        PyErr_SetString(PyExc_TypeError, "the block has not been constructed");
        return -1;
    };
}

}  // namespace zvr::python
