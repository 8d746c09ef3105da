/// The clients of `tessora serve`: lines in, lines out, over standard input and output or a Unix
/// socket. One source per system; on Windows there are no sockets.
#pragma once

#include "app/child_process.h"

#include <memory>
#include <string>
#include <vector>

namespace app {

struct ServiceClient {
    std::string received;     ///< not yet taken
    std::string unsent;       ///< not yet written
    bool is_paused = false;   ///< set by the service: read no more for now
    bool input_ended = false; ///< no more requests come; answers may still be read
    bool is_gone = false;     ///< answers cannot be written any more
    int input = -1, output = -1;
};

class ServiceStreams {
public:
    ServiceStreams();
    /// Closes the clients and removes the socket.
    ~ServiceStreams();
    ServiceStreams(const ServiceStreams&) = delete;
    ServiceStreams& operator=(const ServiceStreams&) = delete;

    /// The one client is on standard input and output.
    void open_standard();
    /// Makes a socket that only this user can open. Its folder must belong to the user, and nobody
    /// else may write there. A socket of the user that nobody listens on is replaced.
    /// Errors: false with a sentence in `error`.
    bool listen(const std::string& path, std::string& error);

    /// Removes clients that are gone, and those whose input has ended if `is_idle` says so.
    template <class IsIdle>
    void remove_clients(IsIdle is_idle) {
        for (size_t i = clients_.size(); i-- > 0;)
            if (clients_[i]->is_gone ||
                (clients_[i]->input_ended && clients_[i]->unsent.empty() && is_idle(*clients_[i])))
                close_client(i);
    }
    const std::vector<std::unique_ptr<ServiceClient>>& clients() const { return clients_; }

    /// Accepts, reads and writes what is possible, and receives what the worker writes. Returns
    /// when something has happened, when a signal came, or after the time.
    void wait(ChildProcess& worker, int milliseconds);

    struct System;

private:
    void accept_client();
    void close_client(size_t index);

    std::vector<std::unique_ptr<ServiceClient>> clients_;
    std::unique_ptr<System> system_;
};

} // namespace app
