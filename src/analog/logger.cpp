// The logger: rows go to a CSV file from a thread of its own, so that readers never wait for the disk.
#include "analog/logger.h"

#include "analog/analog.h"
#include "analog/log_fields.h"
#include "analog/log_parts.h"
#include "core/engine/fifo.h"
#include "core/wire/constants.h"
#include "device/devices.h"
#include "device/queue_face.h"
#include "python/operation.h"
#include "python/raising.h"

namespace zvr::python {

namespace {

using LogThreadPointer = std::shared_ptr<LogThread>;

// A subclass that never calls DataLogger.__init__ gets its LogThread here, without a thread, to coordinate its steps.
LogThreadPointer loggerOf(py::handle self) {
    if (LogThreadPointer kept = keptLogThread(self)) return kept;
    const auto made = std::make_shared<LogThread>(self);
    keepLogThread(self, made);
    return made;
}

// The open file, or None.
Object fileOf(py::handle self) {
    Object file = attributeOrNothing(self, "f_handle");
    return file ? file : py::none();
}

// Replaces the open file between two writes. Returns the old one.
Object exchangeFile(py::handle self, LogThread& logger, const Object& file, const Object& writer) {
    const LogThread::Pause pause(logger);
    Object before = fileOf(self);
    setAttribute(self, "f_handle", file);
    setAttribute(self, "writer_csv", writer);
    return before;
}

void closeIfOpen(const Object& file) {
    if (!file.is_none()) callMethod(file, "close");
}

// Waits until the queued rows are in the file.
void awaitWritten(py::handle self, LogThread& logger) {
    if (fileOf(self).is_none()) return;
    logger.awaitWritten();
    logger.writeRest();
}

void closeFile(py::handle self) {
    const LogThreadPointer logger = loggerOf(self);
    if (logger->isForeign()) return;
    awaitWritten(self, *logger);
    if (fileOf(self).is_none()) return;
    closeIfOpen(exchangeFile(self, *logger, py::none(), py::none()));
}

void construct(py::handle self) {
    const auto setPlainFields = [&] {
        for (const char* field : {"f_handle", "writer_csv", "filename"}) setAttribute(self, field, py::none());
        setAttribute(self, "queue_timeout", py::int_(QUEUE_TIMEOUT));
        setAttribute(self, "killed", py::bool_(false));
    };
    const LogThreadPointer known = keptLogThread(self);
    if (known && known->works() && !isTrue(attribute(self, "killed"))) {
        closeFile(self);
        setPlainFields();
        shutLock(attribute(self, "save_data_lock"));
        return;
    }
    const auto logger = std::make_shared<LogThread>(self);
    keepLogThread(self, logger);
    setPlainFields();
    const Object queue = py::cast(std::make_shared<Fifo<SharedObject>>());
    setAttribute(self, "save_data_lock", py::cast(std::make_shared<Gate>()));
    setAttribute(self, "save_data_queue", queue);
    if (hasOwnMethod(self, "_saveStreamingDataThread")) {
        setAttribute(self, "save_data_thread", py::cast(std::shared_ptr<OwnedThread>(logger)));
        logger->start();
        return;
    }
    const Object thread = callByName(py::module_::import("threading"), interned("Thread"), {},
                                     {{"target", attribute(self, "_saveStreamingDataThread")},
                                      {"args", py::make_tuple(queue)},
                                      {"name", py::str(logger->name())},
                                      {"daemon", py::bool_(true)}});
    setAttribute(self, "save_data_thread", thread);
    logger->startOnHost(thread);
}

// Whether this file is already open. An object that is no system file is compared by name.
bool isOpen(py::handle self, const Object& name) {
    const Object file = fileOf(self);
    if (file.is_none()) return false;
    try {
        return isTrue(callObject(pythonObject("os.path", "samestat"),
                                 callObject(pythonObject("os", "fstat"), callMethod(file, "fileno")),
                                 callObject(pythonObject("os", "stat"), name)));
    } catch (const py::error_already_set& failure) {
        if (!failure.matches(PyExc_Exception)) throw;
        return name.equal(attribute(self, "filename"));
    }
}

void openFile(py::handle self, const Object& name, const Object& clearOld, const Object& verbose) {
    const LogThreadPointer logger = loggerOf(self);
    if (logger->isForeign()) throw std::runtime_error("the logger belongs to the process that made it");
    std::exception_ptr failure;
    const auto closeOld = [&](const Object& file) {
        try {
            closeIfOpen(file);
        } catch (...) {
            failure = caught();
        }
    };
    if (isOpen(self, name)) {
        // Two open files at once would interleave rows.
        awaitWritten(self, *logger);
        closeOld(exchangeFile(self, *logger, py::none(), py::none()));
    }
    const Object file =
        callByName(py::module_::import("builtins"), interned("open"), {name, py::str(isTrue(clearOld) ? "w" : "a")},
                   {{"encoding", py::str("UTF8")}, {"newline", py::str("")}});
    try {
        const Object writer = callObject(pythonObject("csv", "writer"), file);
        awaitWritten(self, *logger);
        closeOld(exchangeFile(self, *logger, file, writer));
    } catch (...) {
        const std::exception_ptr why = caught();
        callMethod(file, "close");
        std::rethrow_exception(why);
    }
    setAttribute(self, "filename", name);
    openLock(attribute(self, "save_data_lock"));
    logger->noteChange();
    if (failure) std::rethrow_exception(failure);
    if (isTrue(verbose)) printLine(py::str("Opened file name: ({})").format(name));
}

void flush(py::handle self) {
    const LogThreadPointer logger = loggerOf(self);
    if (logger->isForeign()) return;
    awaitWritten(self, *logger);
    const LogThread::Pause pause(*logger);
    const Object file = fileOf(self);
    if (!file.is_none()) callMethod(file, "flush");
}

void closeLogger(py::handle self, const Object& /*verbose*/) {
    const LogThreadPointer logger = loggerOf(self);
    thenAlways([&] { closeFile(self); },
               [&] {
                   setAttribute(self, "killed", py::bool_(true));
                   if (logger->isForeign()) return;
                   const Object lock = attribute(self, "save_data_lock");
                   shutLock(lock);
                   putMarker(attribute(self, "save_data_queue"));
                   openLock(lock);
                   logger->noteChange();
               });
}

// Time after Ctrl-C for a write in progress.
constexpr std::chrono::milliseconds lastRows{500};

void tellLost(LogThread& logger) noexcept {
    try {
        const Object name = logger.fileName();
        const std::size_t rows = logger.cancel();
        const auto errors = pythonObject("sys", "stderr");
        if (rows == 0 || errors.is_none()) return;
        const Object text =
            py::str("pyzvr: interrupted, up to {} rows that were queued for {!r} are lost\n").format(rows, name);
        callMethod(errors, "write", text);
        callMethod(errors, "flush");
    } catch (...) {
        reportUnraisable();
    }
}

Object alone(const Object& item) {
    py::list list;
    list.append(item);
    return list;
}

}  // namespace

void defineLogger(Package& package) {
    const Parameter verbose{"verbose", "bool", "whether to print a line", "True"};
    const std::string flushText = "Waits until everything queued is in the file, and flushes the file.";
    const Raises flushErrors{
        "OSError: the rest cannot be written; earlier failures are counted by Logger_getLostWrites"};
    package
        .makeClass("DataLogger", {},
                   "Writes rows to a CSV file from a thread of its own. Rows queued before a file is open are written "
                   "once one is.")
        .field({"f_handle", "Any", "the open file; None while there is none"})
        .field({"writer_csv", "Any", "the CSV writer over it"})
        .field({"filename", "str | None", "name of the file opened last"})
        .field({"save_data_lock", "Gate", "gate of the thread, shut until a file is open"})
        .field({"save_data_queue", "ItemFifo", "matrices of rows to be written"})
        .field({"save_data_thread", "DeviceThread", "the thread that writes"})
        .field({"queue_timeout", "int", "seconds that the thread waits for rows before it checks its state"})
        .field({"killed", "bool", "set once; the thread ends when its queue is empty"})
        .method({.name = "__init__", .doc = "Starts the thread, which waits for a file.", .body = construct})
        .method({.name = "Logger_openFile",
                 .parameters = {{"filename", "str", "name of the file"},
                                {"clear_old", "bool", "whether to empty the file; else rows are added", "False"},
                                verbose},
                 .doc = "Opens a file once all rows queued for the previous one are written.",
                 .raises = {"OSError: the file cannot be opened; nothing changes then, except that the same file, if "
                            "it was open, is closed"},
                 .body = openFile})
        .method({.name = "Logger_writeHeader",
                 .parameters = {{"header", "Sequence[object]", "titles of the columns"}},
                 .doc = "Queues a row of titles.",
                 .body = [](py::handle self, const Object& row) { callMethod(self, "Logger_writeList", row); }})
        .method(
            {.name = "Logger_writeList",
             .parameters = {{"value_list", "Sequence[object]", "values of one row"}},
             .doc = "Queues a row.",
             .body = [](py::handle self, const Object& row) { callMethod(self, "Logger_write2DList", alone(row)); }})
        .method(
            {.name = "Logger_write2DList",
             .parameters = {{"value_mat", "Any",
                             "rows: a list of lists, anything like it, or a SampleBlock, which stays as it is until "
                             "the thread writes it"}},
             .doc = "Queues rows.",
             .body = [](py::handle self,
                        const Object& rows) { callMethod(attribute(self, "save_data_queue"), "put", rows); }})
        .method(
            {.name = "Logger_writeValue",
             .parameters = {{"value", "object", "the value"}},
             .doc = "Queues a row of one value.",
             .body = [](py::handle self, const Object& value) { callMethod(self, "Logger_writeList", alone(value)); }})
        .method({.name = "Logger_flush", .doc = flushText, .raises = flushErrors, .body = flush})
        .awaitable(inThreadOf("Logger_flush", {}, flushText, flushErrors))
        .method(
            {.name = "Logger_getLostWrites",
             .doc = "Returns how many queued matrices could not be written.",
             .returns = {"int", "count since construction; the first error of each file is reported", "a host record"},
             .body = [](py::handle self) { return loggerOf(self)->lost(); }})
        .method(
            {.name = "_saveStreamingDataThread",
             .parameters = {{"queue_", "Any", "the queue to take matrices from"}},
             .doc = "Body of the thread: passes the gate, takes a matrix and writes it, until the object is killed.",
             .raises = {"queue.Empty: nothing arrived within `queue_timeout`"},
             .body = [](py::handle self, const Object& queue) { loggerOf(self)->runFor(self, queue); }})
        .method({.name = "_Logger_close",
                 .parameters = {{"verbose", "bool", "without effect", "True"}},
                 .doc = "Writes the queued rows, closes the file and ends the thread for good.",
                 .raises = {"OSError: the rows cannot be written"},
                 .body = closeLogger});
    defineLogFields(package.get("DataLogger"));
    refusePickling(package.get("DataLogger"));
}

void drainLoggers() {
    const std::vector<LogThreadPointer> all = LogThread::all();
    try {
        for (const LogThreadPointer& logger : all) {
            if (logger->isForeign()) continue;
            try {
                logger->drain();
            } catch (const py::error_already_set& failure) {
                if (!failure.matches(PyExc_Exception)) throw;
                reportThreadFailure(logger->name(), caught());
            }
        }
    } catch (const py::error_already_set&) {
        for (const LogThreadPointer& logger : all) {
            if (!logger->isForeign()) tellLost(*logger);
        }
        // The file's buffer is flushed when the thread closes it.
        blocking([&](const InterruptCheck&) {
            for (const Deadline late = Clock::now() + lastRows; const LogThreadPointer& logger : all) {
                if (!logger->isForeign()) logger->awaitEnd(late, {});
            }
        });
    }
    for (const LogThreadPointer& logger : all) {
        if (!logger->isForeign()) logger->end();
    }
}

}  // namespace zvr::python
