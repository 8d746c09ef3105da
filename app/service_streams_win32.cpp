#include "app/service_streams.h"

#include <algorithm>
#include <chrono>
#include <io.h>
#include <mutex>
#include <thread>

namespace app {

/// Anonymous pipes and consoles cannot be waited for, so a thread reads standard input. It may
/// outlive the service, which ends with the process.
struct ServiceStreams::System {
    struct Input {
        std::mutex mutex;
        std::string received;
        bool has_ended = false;
    };
    std::shared_ptr<Input> input;
};

namespace {

constexpr size_t k_most_waiting = 1 << 20; ///< bytes that the thread reads ahead

} // namespace

ServiceStreams::ServiceStreams() : system_(std::make_unique<System>()) {}

ServiceStreams::~ServiceStreams() = default;

void ServiceStreams::open_standard() {
    clients_.push_back(std::make_unique<ServiceClient>());
    const auto input = system_->input = std::make_shared<System::Input>();
    std::thread([input] {
        char block[65536];
        for (;;) {
            const int got = ::_read(0, block, sizeof block);
            std::unique_lock<std::mutex> lock(input->mutex);
            if (got <= 0) {
                input->has_ended = true;
                return;
            }
            input->received.append(block, size_t(got));
            while (input->received.size() > k_most_waiting) {
                lock.unlock();
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
                lock.lock();
            }
        }
    }).detach();
}

bool ServiceStreams::listen(const std::string& path, std::string& error) {
    error = path + ": this system has no sockets for a service; it can use standard input";
    return false;
}

void ServiceStreams::accept_client() {}

void ServiceStreams::close_client(size_t index) {
    clients_.erase(clients_.begin() + std::ptrdiff_t(index));
}

void ServiceStreams::wait(ChildProcess& worker, int milliseconds) {
    if (clients_.empty())
        return;
    ServiceClient& client = *clients_[0];
    while (!client.unsent.empty() && !client.is_gone) {
        const unsigned size = unsigned(std::min<size_t>(client.unsent.size(), 1 << 16));
        const int wrote = ::_write(1, client.unsent.data(), size);
        client.is_gone = wrote <= 0;
        client.unsent.erase(0, wrote > 0 ? size_t(wrote) : 0);
    }
    {
        const std::lock_guard<std::mutex> lock(system_->input->mutex);
        const bool has_come = !client.is_paused && !system_->input->received.empty();
        if (has_come) {
            client.received += system_->input->received;
            system_->input->received.clear();
        }
        client.input_ended = system_->input->has_ended && system_->input->received.empty();
        if (has_come)
            return;
    }
    wait_for_children({&worker}, std::min(milliseconds, 5));
}

} // namespace app
