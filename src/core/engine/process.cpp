#include "core/engine/process.h"

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <mutex>
#include <system_error>

#include "core/engine/never_destroyed.h"

namespace zvr {

/// The open descriptors, in a list whose lock the forking thread holds during the fork.
struct DescriptorsOfProcess {
    std::mutex mutex;
    OwnDescriptor* first = nullptr;

    void add(OwnDescriptor& added) {
        const std::lock_guard lock(mutex);
        added.next_ = first;
        if (first != nullptr) first->previous_ = &added;
        first = &added;
    }

    // Returns the descriptor, which the caller must close; -1 if another thread already took it.
    int remove(OwnDescriptor& removed) {
        const std::lock_guard lock(mutex);
        const int descriptor = removed.descriptor_.exchange(-1);
        if (descriptor < 0) return -1;
        (removed.previous_ != nullptr ? removed.previous_->next_ : first) = removed.next_;
        if (removed.next_ != nullptr) removed.next_->previous_ = removed.previous_;
        removed.previous_ = removed.next_ = nullptr;
        return descriptor;
    }

    void closeAll() {
        for (OwnDescriptor* each = first; each != nullptr;) {
            ::close(each->descriptor_.exchange(-1));
            OwnDescriptor* const next = each->next_;
            each->previous_ = each->next_ = nullptr;
            each = next;
        }
        first = nullptr;
    }
};

namespace {

struct Process {
    DescriptorsOfProcess descriptors;
};

Process& process() {
    static Process& one = [&]() -> Process& {
        Process& made =
            *std::make_unique<Process>().release();  // never destroyed: threads use it while the process ends
        return made;
    }();
    static const int watched =
        ::pthread_atfork([] { process().descriptors.mutex.lock(); }, [] { process().descriptors.mutex.unlock(); },
                         [] {
                             ++detail::processGeneration;
                             process().descriptors.closeAll();
                             process().descriptors.mutex.unlock();
                         });
    static_cast<void>(watched);
    return one;
}

}  // namespace

ProcessMark::ProcessMark() {
    process();  // starts counting forks
    generation_ = detail::processGeneration;
}

std::string foreignMessage(const std::string& what) {
    return what + " was made before os.fork() and belongs to the parent process. Make a new one in the child.";
}

OwnDescriptor::OwnDescriptor(int descriptor) : descriptor_(descriptor) { process().descriptors.add(*this); }

void OwnDescriptor::reset() {
    if (descriptor_ < 0) return;
    const int descriptor = process().descriptors.remove(*this);
    if (descriptor >= 0) ::close(descriptor);
}

void closeOnExec(int descriptor) {
    const int flags = ::fcntl(descriptor, F_GETFD);
    if (flags < 0 || ::fcntl(descriptor, F_SETFD, flags | FD_CLOEXEC) < 0) {
        throw std::system_error(errno, std::generic_category());
    }
}

}  // namespace zvr
