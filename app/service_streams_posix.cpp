#include "app/service_streams.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace app {

struct ServiceStreams::System {
    int listener = -1;
    std::string path; ///< of the socket, once it is ours
};

namespace {

constexpr size_t k_most_clients = 64;
constexpr size_t k_block = 65536;

std::string folder_of(const std::string& path) {
    const size_t slash = path.rfind('/');
    return slash == path.npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

int make_socket() { return ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0); }

/// The folder belongs to the user, and nobody else can put files there.
bool check_folder(const std::string& path, std::string& error) {
    struct stat info;
    const std::string folder = folder_of(path);
    if (::stat(folder.c_str(), &info) != 0)
        error = folder + ": " + std::strerror(errno);
    else if (info.st_uid != ::geteuid() || (info.st_mode & (S_IWGRP | S_IWOTH)) != 0)
        error = folder + ": the socket's folder must be yours, and nobody else may write there";
    return error.empty();
}

/// Removes a socket of the user that nobody listens on; refuses anything else.
bool make_room(const std::string& path, const sockaddr_un& address, std::string& error) {
    struct stat info;
    if (::lstat(path.c_str(), &info) != 0)
        return true;
    if (!S_ISSOCK(info.st_mode) || info.st_uid != ::geteuid()) {
        error = path + ": exists and is not a socket of yours; it stays as it is";
        return false;
    }
    const int probe = make_socket();
    const bool is_dead =
        probe >= 0 &&
        ::connect(probe, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 &&
        errno == ECONNREFUSED;
    if (probe >= 0)
        ::close(probe);
    if (!is_dead)
        error = path + ": another service listens there";
    return is_dead && (::unlink(path.c_str()) == 0 || errno == ENOENT);
}

bool is_same_user(int socket) {
    ucred peer;
    socklen_t size = sizeof peer;
    return ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
           peer.uid == ::geteuid();
}

void receive(ServiceClient& client) {
    char block[k_block];
    const ssize_t got = ::read(client.input, block, sizeof block);
    if (got > 0)
        client.received.append(block, static_cast<size_t>(got));
    else if (got == 0 || (errno != EINTR && errno != EAGAIN))
        client.input_ended = true;
}

/// A pipe that is ready takes PIPE_BUF bytes without waiting, whatever its mode.
void send(ServiceClient& client) {
    const size_t size = std::min<size_t>(client.unsent.size(), PIPE_BUF);
    const ssize_t wrote = ::write(client.output, client.unsent.data(), size);
    if (wrote > 0)
        client.unsent.erase(0, static_cast<size_t>(wrote));
    else if (wrote < 0 && errno != EINTR && errno != EAGAIN)
        client.is_gone = true;
}

} // namespace

ServiceStreams::ServiceStreams() : system_(std::make_unique<System>()) {}

ServiceStreams::~ServiceStreams() {
    while (!clients_.empty())
        close_client(clients_.size() - 1);
    if (system_->listener >= 0)
        ::close(system_->listener);
    if (!system_->path.empty())
        ::unlink(system_->path.c_str());
}

void ServiceStreams::open_standard() {
    clients_.push_back(std::make_unique<ServiceClient>());
    clients_.back()->input = STDIN_FILENO;
    clients_.back()->output = STDOUT_FILENO;
}

bool ServiceStreams::listen(const std::string& path, std::string& error) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        error = path + ": a socket's name has at most " +
                std::to_string(sizeof address.sun_path - 1) + " bytes";
        return false;
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    if (!check_folder(path, error) || !make_room(path, address, error))
        return false;
    system_->listener = make_socket();
    const mode_t before = ::umask(0177);
    const bool is_bound =
        system_->listener >= 0 &&
        ::bind(system_->listener, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    const int reason = errno;
    ::umask(before);
    if (is_bound)
        system_->path = path;
    if (is_bound && ::listen(system_->listener, 8) == 0)
        return true;
    error = path + ": cannot be listened on: " + std::strerror(is_bound ? errno : reason);
    return false;
}

void ServiceStreams::close_client(size_t index) {
    const ServiceClient& client = *clients_[index];
    if (client.input > STDERR_FILENO)
        ::close(client.input);
    clients_.erase(clients_.begin() + static_cast<std::ptrdiff_t>(index));
}

void ServiceStreams::accept_client() {
    const int peer = ::accept4(system_->listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (peer < 0)
        return;
    if (!is_same_user(peer)) {
        ::close(peer);
        return;
    }
    clients_.push_back(std::make_unique<ServiceClient>());
    clients_.back()->input = clients_.back()->output = peer;
}

void ServiceStreams::wait(ChildProcess& worker, int milliseconds) {
    std::vector<pollfd> files;
    for (const auto& client : clients_) {
        const bool reads = !client->is_paused && !client->input_ended;
        const short events = static_cast<short>(
            (reads ? POLLIN : 0) |
            (client->input == client->output && !client->unsent.empty() ? POLLOUT : 0));
        // Without an event to wait for, a hang-up of a socket still counts.
        const bool is_socket = client->input == client->output;
        files.push_back({events || is_socket ? client->input : -1, events, 0});
        const bool writes = !is_socket && !client->unsent.empty();
        files.push_back({writes ? client->output : -1, POLLOUT, 0});
    }
    files.push_back({clients_.size() < k_most_clients ? system_->listener : -1, POLLIN, 0});
    files.push_back({worker.output_file(), POLLIN, 0});
    if (::poll(files.data(), files.size(), milliseconds) <= 0)
        return;
    const size_t count = clients_.size();
    for (size_t i = 0; i < count; ++i) {
        ServiceClient& client = *clients_[i];
        const short in = files[2 * i].revents, out = files[2 * i + 1].revents;
        if (((in | out) & POLLERR) || ((in & POLLHUP) && client.input == client.output))
            client.is_gone = true; // both directions are closed
        else if (in & (POLLIN | POLLHUP))
            receive(client);
        if (!client.is_gone && ((in | out) & POLLOUT))
            send(client);
    }
    if (files[2 * count].revents & POLLIN)
        accept_client();
    if (files[2 * count + 1].revents)
        wait_for_children({&worker}, 0);
}

} // namespace app
