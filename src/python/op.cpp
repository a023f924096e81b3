#include "python/op.h"

#include <thread>

namespace zvr::python {

void sleepBlocking(double seconds) {
    blocking([deadline = deadlineIn(seconds)](const InterruptCheck& onWait) {
        waitInterruptibly(deadline, onWait, [](Deadline until) {
            std::this_thread::sleep_until(until);
            return false;
        });
    });
}

Awaiter Op::run(Task steps) const {
    if (!awaitable()) return Awaiter::done(steps.runThrough());
    const py::handle name(interned("steps"));
    return Awaiter::on(makeCoroutine(std::move(steps), name, name));
}

Awaiter Op::sleep(double seconds) const {
    if (awaitable()) return Awaiter::on(callObject(pythonObject("asyncio", "sleep"), py::float_(seconds)));
    sleepBlocking(seconds);
    return Awaiter::done(py::none());
}

Awaiter within(Deadline limit, Object&& given) {
    const Object awaitable = std::move(given);
    if (!isOurCoroutine(awaitable)) {
        const double seconds = std::chrono::duration<double>(limit - Clock::now()).count();
        return Awaiter::on(callObject(pythonObject("asyncio", "wait_for"), awaitable, py::float_(seconds)));
    }
    limitCoroutine(awaitable, limit);
    return Awaiter::on(awaitable);
}

PyObject* Op::timeoutKeyword() {
    static PyObject* const keyword = PyTuple_Pack(1, interned("timeout"));
    return keyword;
}

}  // namespace zvr::python
