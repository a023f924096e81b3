#include "python/op.h"

#include <thread>

namespace zvr::python {

void sleepBlocking(double seconds) {
    blocking([deadline = deadlineIn(seconds)](const Attend& attend) {
        waitAttended(deadline, attend, [](Deadline until) {
            std::this_thread::sleep_until(until);
            return false;
        });
    });
}

Pending Op::run(Result steps) const {
    if (!awaitable()) return Pending::done(steps.runThrough());
    const py::handle name(interned("steps"));
    return Pending::on(makeCoroutine(std::move(steps), name, name));
}

Pending Op::sleep(double seconds) const {
    if (awaitable()) return Pending::on(callObject(hostObject("asyncio", "sleep"), py::float_(seconds)));
    sleepBlocking(seconds);
    return Pending::done(py::none());
}

Pending within(Deadline limit, Object&& given) {
    const Object awaitable = std::move(given);
    if (!isOurCoroutine(awaitable)) {
        const double seconds = std::chrono::duration<double>(limit - Clock::now()).count();
        return Pending::on(callObject(hostObject("asyncio", "wait_for"), awaitable, py::float_(seconds)));
    }
    limitCoroutine(awaitable, limit);
    return Pending::on(awaitable);
}

PyObject* Op::timeoutKeyword() {
    static PyObject* const keyword = PyTuple_Pack(1, interned("timeout"));
    return keyword;
}

}  // namespace zvr::python
