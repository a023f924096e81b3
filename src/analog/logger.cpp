// The logger: rows go to a CSV file from a thread of its own, so that who reads never waits for the disk.
#include "analog/analog.h"
#include "analog/rows.h"
#include "core/constants.h"
#include "core/fifo.h"
#include "core/gate.h"
#include "core/threads.h"
#include "protocol/runtime.h"
#include "python/raising.h"

namespace zvr::python {

namespace {

constexpr const char* partName = "logger";
// Rows of a block that are written in one go; the others of the interpreter have their turn in between.
constexpr Py_ssize_t rowsInOneGo = 256;

/// The thread, its queue, and the file that it writes to. It lives until the queue is empty, even if its object is
/// gone.
class Logger final : public OwnedThread, public std::enable_shared_from_this<Logger> {
public:
    using Item = SharedObject;  // a matrix of rows; nothing is a marker that only wakes

    struct Target {
        SharedObject file, writer;
    };

    explicit Logger(std::shared_ptr<const std::atomic<bool>> killed)
        : OwnedThread("_saveStreamingDataThread", reportThreadFailure), killed_(std::move(killed)) {}

    void start() {
        startBody([self = shared_from_this()] { self->run(); });
    }

    void run() {
        for (;;) {
            gate.pass();
            std::optional<Item> item = queue.tryGet();
            if (!item && isOver()) break;
            if (!item) item = queue.get(deadlineIn(QUEUE_TIMEOUT));
            if (item && *item) write(std::move(*item));
            noteDone();
        }
        finish();
    }

    void end() {
        ended_ = true;
        gate.release();
        queue.tryPut(nullptr);
    }

    /// Waits until everything queued is in the file.
    void awaitWritten(const Attend& attend) {
        waitAttended(forever, attend, [&](Deadline until) {
            std::unique_lock lock(mutex_);
            const Deadline look = std::min(until, Clock::now() + std::chrono::milliseconds(50));
            return waitOn(idle_, lock, look, [&] { return queue.size() == 0 && !writing_; }) || gate.locked() ||
                   !alive();
        });
    }

    /// Nothing while no file is open.
    void setTarget(Target target) {
        {
            const std::lock_guard lock(mutex_);
            std::swap(target_, target);
        }
        reported_ = false;
    }

    std::uint64_t lost() const { return lost_; }

    Fifo<Item> queue;
    Gate gate;

private:
    bool isOver() const { return ended_ || *killed_; }

    void write(Item rows) {
        Target target;
        {
            const std::lock_guard lock(mutex_);
            target = target_;
            writing_ = true;
        }
        attempt([&] {
            // Only at the very end may there be rows without a file.
            if (target.writer)
                writeRows(target.writer.get(), rows.get());
            else
                ++lost_;
        });
        onInterpreter([&] {
            rows.reset();
            target = {};
        });
    }

    // An object that was dropped has not closed its file.
    void finish() {
        Target target;
        {
            const std::lock_guard lock(mutex_);
            std::swap(target_, target);
        }
        if (target.file) attempt([&] { callMethod(target.file.get(), "close"); });
        onInterpreter([&] { target = {}; });
    }

    template <class Action>
    void attempt(Action&& action) {
        onInterpreter([&] {
            try {
                action();
            } catch (...) {
                ++lost_;
                if (!reported_.exchange(true)) reportThreadFailure(name(), std::current_exception());
            }
        });
    }

    static void writeRows(PyObject* writer, PyObject* rows) {
        if (!py::isinstance<SampleBlock>(rows)) {
            callMethod(writer, "writerows", py::handle(rows));
            return;
        }
        const Object view = own(PyMemoryView_FromObject(rows));
        const auto count = static_cast<Py_ssize_t>(py::cast<SampleBlock*>(rows)->rows);
        for (Py_ssize_t first = 0; first < count; first += rowsInOneGo) {
            const py::slice some(first, std::min(first + rowsInOneGo, count), 1);
            callMethod(writer, "writerows", callMethod(own(PyObject_GetItem(view.ptr(), some.ptr())), "tolist"));
            const WithoutGil released;
        }
    }

    void noteDone() {
        {
            const std::lock_guard lock(mutex_);
            writing_ = false;
        }
        idle_.notify_all();
    }

    const std::shared_ptr<const std::atomic<bool>> killed_;
    std::atomic<bool> ended_{false};
    std::atomic<std::uint64_t> lost_{0};
    std::mutex mutex_;
    std::condition_variable idle_;
    Target target_;
    bool writing_ = false;
    std::atomic<bool> reported_{false};
};

struct LoggerPart final : RuntimePart {
    explicit LoggerPart(std::shared_ptr<Logger> thread) : logger(std::move(thread)) {}
    void end() override { logger->end(); }
    const std::shared_ptr<Logger> logger;
};

std::shared_ptr<Logger> loggerOf(py::handle self) {
    const auto part = runtimeOf(self).part<LoggerPart>(partName);
    if (!part) throw py::attribute_error("the object has no logger");
    return part->logger;
}

void construct(py::handle self) {
    if (!attributeOrNothing(self, "_runtime")) {
        py::setattr(self, "_runtime", py::cast(std::make_unique<DeviceRuntime>()));
    }
    for (const char* field : {"f_handle", "writer_csv", "filename"}) setAttribute(self, field, py::none());
    setAttribute(self, "queue_timeout", py::int_(QUEUE_TIMEOUT));
    DeviceRuntime& runtime = runtimeOf(self);
    if (runtime.part<LoggerPart>(partName)) return;
    const auto logger = std::make_shared<Logger>(runtime.killedFlag());
    runtime.keep(partName, std::make_shared<LoggerPart>(logger));
    setAttribute(self, "save_data_lock", py::cast(std::shared_ptr<Gate>(logger, &logger->gate)));
    setAttribute(self, "save_data_queue", py::cast(std::shared_ptr<Fifo<Logger::Item>>(logger, &logger->queue)));
    setAttribute(self, "save_data_thread", py::cast(std::shared_ptr<OwnedThread>(logger)));
    logger->start();
}

// What is queued reaches the file before it is closed.
void closeFile(py::handle self) {
    const Object file = attribute(self, "f_handle");
    if (file.is_none()) return;
    const auto logger = loggerOf(self);
    blocking([&](const Attend& attend) { logger->awaitWritten(attend); });
    logger->setTarget({});
    setAttribute(self, "f_handle", py::none());
    setAttribute(self, "writer_csv", py::none());
    callMethod(file, "close");
}

void openFile(py::handle self, const Object& name, const Object& clearOld, const Object& verbose) {
    const auto logger = loggerOf(self);
    const bool clears = PyObject_IsTrue(clearOld.ptr()) != 0;
    const Object file =
        hostObject("builtins", "open")(name, clears ? "w" : "a", py::arg("encoding") = "UTF8", py::arg("newline") = "");
    thenAlways([&] { closeFile(self); },
               [&] {
                   const Object writer = hostObject("csv", "writer")(file);
                   setAttribute(self, "f_handle", file);
                   setAttribute(self, "writer_csv", writer);
                   setAttribute(self, "filename", name);
                   logger->setTarget({shared(file), shared(writer)});
               });
    callMethod(attribute(self, "save_data_lock"), "release");
    if (PyObject_IsTrue(verbose.ptr()) != 0) py::print(py::str("Opened file name: ({})").format(name));
}

Object alone(const Object& item) {
    py::list list;
    list.append(item);
    return list;
}

}  // namespace

void defineLogger(Package& package) {
    const Parameter verbose{"verbose", "bool", "whether to print a line", "True"};
    package
        .makeClass(
            "DataLogger", {},
            "Writes rows to a CSV file from a thread of its own. What is queued before a file is open is written "
            "when one is.")
        .field({"f_handle", "Any", "the open file; None while there is none"})
        .field({"writer_csv", "Any", "the CSV writer over it"})
        .field({"filename", "str | None", "name of the file opened last"})
        .field({"save_data_lock", "Gate", "gate of the thread, shut until a file is open"})
        .field({"save_data_queue", "ItemFifo", "matrices of rows that wait"})
        .field({"save_data_thread", "DeviceThread", "the thread that writes"})
        .field({"queue_timeout", "int", "seconds that the thread waits for rows before it looks around"})
        .property(
            {"killed", "bool", "Set once; the thread ends when its queue is empty."},
            [](py::handle self) { return runtimeOf(self).killed(); },
            [](py::handle self, const Object& value) { runtimeOf(self).setKilled(PyObject_IsTrue(value.ptr()) != 0); })
        .method("__init__", {}, "Starts the thread, which waits for a file.", {}, {}, Calls<construct>{})
        .method("Logger_openFile",
                {{"filename", "str", "name of the file"},
                 {"clear_old", "bool", "whether to empty the file; else rows are added", "False"},
                 verbose},
                "Opens a file, after all that is queued for the one before has reached that.", {},
                {"OSError: the file cannot be opened; nothing changes then"}, Calls<openFile>{})
        .method("Logger_writeHeader", {{"header", "Sequence[object]", "titles of the columns"}},
                "Queues a row of titles.", {}, {},
                [](py::handle self, const Object& row) { callMethod(self, "Logger_writeList", row); })
        .method("Logger_writeList", {{"value_list", "Sequence[object]", "values of one row"}}, "Queues a row.", {}, {},
                [](py::handle self, const Object& row) { callMethod(self, "Logger_write2DList", alone(row)); })
        .method(
            "Logger_write2DList",
            {{"value_mat", "Any",
              "rows: a list of lists, anything like it, or a SampleBlock, which stays as it is until "
              "the thread writes it"}},
            "Queues rows.", {}, {},
            [](py::handle self, const Object& rows) { callMethod(attribute(self, "save_data_queue"), "put", rows); })
        .method("Logger_writeValue", {{"value", "object", "the value"}}, "Queues a row of one value.", {}, {},
                [](py::handle self, const Object& value) { callMethod(self, "Logger_writeList", alone(value)); })
        .method("Logger_flush", {},
                "Waits until everything queued is in the file, and the file on its way to the disk.", {},
                {"OSError: the disk refuses what is left; what it refused before is in Logger_getLostWrites"},
                [](py::handle self) {
                    const Object file = attribute(self, "f_handle");
                    if (file.is_none()) return;
                    const auto logger = loggerOf(self);
                    blocking([&](const Attend& attend) { logger->awaitWritten(attend); });
                    callMethod(file, "flush");
                })
        .method("Logger_getLostWrites", {}, "Tells how many queued matrices could not be written.",
                {"int", "count since construction; the first failure of each file is reported", "a host record"}, {},
                [](py::handle self) { return loggerOf(self)->lost(); })
        .method("_saveStreamingDataThread",
                {{"queue_", "ItemFifo", "without effect: the object's own queue is written"}},
                "Body of the thread: writes rows until the end.", {}, {},
                [](py::handle self, const Object&) {
                    const auto logger = loggerOf(self);
                    const WithoutGil released;
                    logger->run();
                })
        .method("_Logger_close", {{"verbose", "bool", "without effect", "True"}},
                "Writes what is queued, closes the file and ends the thread for good.", {},
                {"OSError: the disk refuses it"}, [](py::handle self, const Object&) {
                    thenAlways([&] { closeFile(self); },
                               [&] {
                                   setAttribute(self, "killed", py::bool_(true));
                                   const Object lock = attribute(self, "save_data_lock");
                                   callMethod(lock, "acquire");
                                   callMethod(attribute(self, "save_data_queue"), "put", py::none());
                                   callMethod(lock, "release");
                               });
                });
}

}  // namespace zvr::python
