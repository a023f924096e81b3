#include "analog/rows.h"

#include <algorithm>
#include <deque>

#include "analog/analog.h"
#include "core/engine/never_destroyed.h"
#include "device/queue_face.h"
#include "device/row_fifo.h"

namespace zvr::python {

namespace {

/// The float objects of all codes of a scale, made when they are first wanted.
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

    /// Those of the last few scales are kept.
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

/// Goes through the runs of one chip select row by row.
class Cursor {
public:
    explicit Cursor(const std::vector<RowRun>& runs) : next_(runs.begin()), end_(runs.end()) { enter(); }

    /// Rows that are left of the run, which all have as many columns.
    std::size_t rows() const { return left_; }
    Py_ssize_t columns() const { return next_ == end_ ? 0 : next_->layout.columns; }

    /// Puts the next row into the items of a new list; gives the item behind it.
    PyObject** fill(PyObject** item) {
        if (next_ == end_) return item;
        PyObject** const behind = item + next_->layout.columns;
        if (floats_ != nullptr) {
            for (Floats& floats = *floats_; item != behind; bytes_ += 2) *item++ = floats(read16(bytes_));
            return behind;
        }
        convertRows(next_->layout, bytes_, 1, values_.data(), values_.size());
        bytes_ += next_->layout.rowBytes();
        for (const double value : values_) {
            *item = PyFloat_FromDouble(value);
            if (*item++ == nullptr) throw py::error_already_set();
        }
        return behind;
    }

    /// As many rows have been taken.
    void advance(std::size_t rows) {
        if (next_ == end_ || (left_ -= rows) != 0) return;
        ++next_;
        enter();
    }

private:
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

// Rows that somebody put are spread out, whatever they are.
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

}  // namespace

py::list toLists(const RowRuns& runs, std::size_t rows) {
    for (const std::vector<RowRun>& chipSelect : runs) {
        for (const RowRun& run : chipSelect) {
            if (run.object) return spreadOut(runs, rows);
        }
    }
    const CollectorPause pause;
    py::list result(rows);
    std::vector<Cursor> cursors(runs.begin(), runs.end());
    for (std::size_t row = 0; row < rows;) {
        std::size_t count = rows - row;
        Py_ssize_t columns = 0;
        for (const Cursor& cursor : cursors) {
            count = std::min(count, cursor.rows());
            columns += cursor.columns();
        }
        for (const std::size_t end = row + count; row < end; ++row) {
            PyObject* const list = PyList_New(columns);
            if (list == nullptr) throw py::error_already_set();
            PyList_SET_ITEM(result.ptr(), static_cast<Py_ssize_t>(row), list);
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

void defineSampleBlock(Package& package) {
    auto type = py::class_<SampleBlock, std::shared_ptr<SampleBlock>>(
                    package.module(), "SampleBlock", py::buffer_protocol(),
                    "Rows of samples in volts as one contiguous block of doubles, (rows, columns).\n\nIt has "
                    "the buffer protocol: memoryview(block) and numpy.asarray(block) see it without a copy.")
                    .def_buffer([](SampleBlock& block) {
                        const auto width = static_cast<py::ssize_t>(sizeof(double));
                        const auto rows = static_cast<py::ssize_t>(block.rows),
                                   columns = static_cast<py::ssize_t>(block.columns);
                        return py::buffer_info(block.values.get(), width, py::format_descriptor<double>::format(), 2,
                                               {rows, columns}, {columns * width, width});
                    });
    ClassMaker(type)
        .property({"shape", "tuple[int, int]", "Numbers of rows and columns."},
                  [](const SampleBlock& block) -> Object { return py::make_tuple(block.rows, block.columns); })
        .method({.name = "__len__",
                 .doc = "Number of rows.",
                 .returns = {"int"},
                 .body = [](const SampleBlock& block) { return block.rows; }})
        .method({.name = "tolist",
                 .doc = "The rows as lists of floats.",
                 .returns = {"list[list[float]]"},
                 .body = [](py::handle self) {
                     native<SampleBlock>(self);
                     return callMethod(own(PyMemoryView_FromObject(self.ptr())), "tolist");
                 }});
    refusePickling(type);
    // A block whose constructor has not run has no memory to show.
    reinterpret_cast<PyHeapTypeObject*>(type.ptr())->as_buffer.bf_getbuffer = [](PyObject* self, Py_buffer* view,
                                                                                 int flags) {
        if (detail::isConstructed(self)) return py::detail::pybind11_getbuffer(self, view, flags);
        view->obj = nullptr;
        PyErr_SetString(PyExc_TypeError, "the block has not been constructed");
        return -1;
    };
}

}  // namespace zvr::python
