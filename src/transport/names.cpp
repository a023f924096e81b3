#include "transport/names.h"

#include <asio/ip/host_name.hpp>
#include <asio/ip/tcp.hpp>

#include "core/engine/process.h"
#include "core/engine/threads.h"

namespace zvr {

namespace {

using Addresses = std::vector<asio::ip::address_v4>;

// How long the addresses of the host's own name are cached.
constexpr std::chrono::seconds freshFor{5};
constexpr std::chrono::milliseconds ownNameWithin{100};

// One lookup. Its thread may outlive the caller, so it owns everything it uses.
class Search {
public:
    static std::shared_ptr<Search> start(const std::string& host) {
        auto search = std::make_shared<Search>();
        startUncountedThread("host name", [search, host] { search->run(host); });
        return search;
    }

    /// Whether it has ended.
    bool await(Deadline deadline, const InterruptCheck& onWait) {
        return waitInterruptibly(deadline, onWait, [&](Deadline until) {
            std::unique_lock lock(mutex_);
            return waitOn(ended_, lock, until, [&] { return done_; });
        });
    }

    Addresses addresses() const {
        const std::lock_guard lock(mutex_);
        if (!done_) throw std::system_error(std::make_error_code(std::errc::timed_out));
        if (failure_) throw std::system_error(failure_);
        return found_;
    }

    const Deadline begin = Clock::now();

private:
    void run(const std::string& host) {
        Addresses found;
        std::error_code failure;
        try {
            asio::io_context context;
            asio::ip::tcp::resolver resolver(context);
            for (const auto& entry : resolver.resolve(asio::ip::tcp::v4(), host, "", failure)) {
                found.push_back(entry.endpoint().address().to_v4());
            }
        } catch (const std::system_error& refused) {
            failure = refused.code();
        }
        const std::lock_guard lock(mutex_);
        found_ = std::move(found);
        failure_ = failure;
        done_ = true;
        ended_.notify_all();
    }

    mutable std::mutex mutex_;
    std::condition_variable ended_;
    bool done_ = false;
    std::error_code failure_;
    Addresses found_;
};

struct OwnName {
    std::mutex mutex;
    std::shared_ptr<Search> search;
};

}  // namespace

Addresses addressesOf(const std::string& host, Deadline deadline, const InterruptCheck& onWait) {
    const auto search = Search::start(host);
    search->await(deadline, onWait);
    Addresses found = search->addresses();
    if (found.empty()) throw std::system_error(std::make_error_code(std::errc::address_not_available));
    return found;
}

Addresses ownNamedAddresses(const InterruptCheck& onWait) {
    static PerProcess<OwnName> names;
    OwnName& name = names.get();
    std::shared_ptr<Search> search;
    {
        const std::lock_guard lock(name.mutex);
        const bool late = name.search && Clock::now() - name.search->begin > freshFor;
        if (!name.search || (late && name.search->await(Clock::now(), {}))) {
            std::error_code nameless;
            name.search = Search::start(asio::ip::host_name(nameless));
        }
        search = name.search;
    }
    try {
        return search->await(search->begin + ownNameWithin, onWait) ? search->addresses() : Addresses();
    } catch (const std::system_error&) {
        return {};
    }
}

}  // namespace zvr
