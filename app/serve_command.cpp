#include "app/serve_command.h"

#include "app/child_process.h"
#include "app/exit_code.h"
#include "app/interrupt.h"
#include "app/service_request.h"
#include "app/service_streams.h"
#include "app/system.h"

#include <algorithm>
#include <chrono>
#include <deque>
#include <filesystem>
#include <map>

namespace app {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* k_usage = R"(usage: tessora serve [options]
       tessora serve --socket PATH [options]

Unwraps what clients ask for, without a new process a mesh: reads requests on
standard input, or on a Unix socket of this user alone, and answers each with a
line, in the order of the requests. docs/serve.md has the format.

examples:
  echo '{"id": 1, "input": "bunny.obj", "output": "out.obj"}' | tessora serve
  tessora serve --socket "$XDG_RUNTIME_DIR/tessora.sock" --root /projects/meshes
      until it is interrupted, with no file beyond one folder

requests:
  {"id": 1, "input": "a.obj", "output": "b.obj", "settings": {"padding": 4}}
  {"id": 2, "mesh": {"positions": [0, 0, 0, ...], "polygons": [[0, 1, 2], ...]}}
  {"id": 3, "cancel": 1}
)";

constexpr const char* k_notes = R"(
exit codes: 0 all requests are answered and standard input has ended, 2 usage, 7
the socket cannot be made or standard output is closed, 130 and 143 interrupted.
A request that fails has its code in its answer and does not end the service.
)";

constexpr size_t k_most_unsent = 1 << 20; ///< bytes for a client that does not read
constexpr std::chrono::seconds k_time_to_end{5};
constexpr int k_idle_milliseconds = 500, k_soon_milliseconds = 10;

struct ServeRequest {
    std::string socket, root;
    int queue = 16;
    int max_request = 16; // MiB
    double time_limit = 0.0;
    bool help = false;
};

OptionTable make_table(ServeRequest& request) {
    OptionTable table;
    table.heading("options (defaults in parentheses):");
    table.add("socket", &request.socket, "SOCKET",
              "listen on a Unix socket instead of standard input; only this user can open it");
    table.add("root", &request.root, "DIR",
              "paths in requests begin in this folder and may not lead out of it");
    table.add("queue", &request.queue, "N", "requests that may wait, 1 to 10000");
    table.add("max_request", &request.max_request, "MIB", "size of a request, 1 to 1024");
    table.add("time_limit", &request.time_limit, "SECONDS",
              "give up a request after this time; 0: never");
    table.add("help", &request.help, "", "show this text");
    return table;
}

bool parse(const Words& words, ServeRequest& request, std::string& error) {
    std::vector<std::string> operands;
    std::error_code failure;
    if (!make_table(request).parse(words, operands, error) || request.help)
        return request.help;
    if (!operands.empty())
        error = "serve takes no files; requests name them";
    else if (request.queue < 1 || request.queue > 10000)
        error = "--queue is 1 to 10000";
    else if (request.max_request < 1 || request.max_request > 1024)
        error = "--max_request is 1 to 1024";
    else if (!(request.time_limit >= 0.0))
        error = "--time_limit must not be negative";
    else if (!request.root.empty() && !std::filesystem::is_directory(request.root, failure))
        error = "--root: " + request.root + " is not a folder";
    return error.empty();
}

/// The place of an answer: clients get answers in the order of their requests.
struct Slot {
    ServiceJson id;
    std::string answer; ///< without its line end; empty until it is known
    std::string work, mesh_line;
};
using SlotRef = std::shared_ptr<Slot>;

struct Work {
    const ServiceClient* client = nullptr;
    SlotRef slot;
};

struct ClientState {
    std::deque<SlotRef> slots;
    size_t searched = 0;      ///< bytes of `received` without a line end
    bool is_skipping = false; ///< the rest of a line that is too long
};

class Service {
public:
    explicit Service(const ServeRequest& request) : request_(request) {}
    int run();

private:
    bool open(std::string& error);
    void take_lines(ServiceClient& client);
    void take_line(ServiceClient& client, const std::string& line);
    void cancel(const ServiceClient& client, Slot& slot, const ServiceJson& id);
    void give_work();
    void take_answers();
    void check_time();
    void end_work(const std::string& how);
    void send_answers(ServiceClient& client);
    void forget(const ServiceClient& client);
    int wait_milliseconds() const;
    void end_worker();
    size_t most_slots() const { return 2 * size_t(request_.queue) + 16; }
    /// Asks the worker to end, which removes its unfinished files.
    void stop_worker() {
        if (stopped_ == Clock::time_point())
            stopped_ = Clock::now();
        worker_.terminate();
    }
    static void answer(Slot& slot, int code, const std::string& reason) {
        slot.answer = ServiceJson({{"id", slot.id}, {"code", code}, {"reason", reason}})
                          .dump(-1, ' ', false, ServiceJson::error_handler_t::replace);
    }

    const ServeRequest& request_;
    ServiceStreams streams_;
    std::map<const ServiceClient*, ClientState> states_;
    std::deque<Work> queue_;
    ChildProcess worker_;
    Work running_;        ///< its slot is null if the worker is idle
    std::string failure_; ///< why the worker was stopped
    int failure_code_ = 0;
    Clock::time_point began_;   ///< the running request
    Clock::time_point stopped_; ///< when the worker was asked to end; zero if it was not
    bool output_is_closed_ = false;
};

void Service::take_lines(ServiceClient& client) {
    ClientState& state = states_[&client];
    const size_t most = size_t(request_.max_request) << 20;
    std::string& received = client.received;
    for (;;) {
        client.is_paused =
            state.slots.size() >= most_slots() || client.unsent.size() > k_most_unsent;
        if (client.is_paused)
            return;
        if (client.input_ended && !received.empty() && received.back() != '\n')
            received += '\n'; // the last line may lack its end
        const size_t end = received.find('\n', state.searched);
        const bool is_whole = end != received.npos;
        const size_t size = is_whole ? end : received.size();
        if (size > most && !state.is_skipping) {
            state.slots.push_back(std::make_shared<Slot>());
            answer(*state.slots.back(), exit_limit,
                   "the request is larger than " + std::to_string(request_.max_request) + " MiB");
            state.is_skipping = true;
        }
        if (!is_whole) {
            if (state.is_skipping)
                received.clear();
            state.searched = received.size();
            return;
        }
        const std::string line = received.substr(0, end);
        received.erase(0, end + 1);
        state.searched = 0;
        if (!state.is_skipping && line.find_first_not_of(" \t\r") != line.npos)
            take_line(client, line);
        state.is_skipping = false;
    }
}

void Service::take_line(ServiceClient& client, const std::string& line) {
    const SlotRef slot = std::make_shared<Slot>();
    states_[&client].slots.push_back(slot);
    ServiceRequest request;
    std::string error;
    const bool is_good = read_service_request(line, request_.root, request, error);
    slot->id = request.id;
    if (!is_good)
        return answer(*slot, exit_usage, error);
    if (!request.cancel.is_null())
        return cancel(client, *slot, request.cancel);
    if (queue_.size() >= size_t(request_.queue))
        return answer(*slot, exit_limit,
                      "the queue is full: " + std::to_string(queue_.size()) + " requests wait");
    slot->work = request.work;
    if (request.has_mesh)
        slot->mesh_line = line;
    queue_.push_back({&client, slot});
}

/// Clients cancel only what they have asked for themselves.
void Service::cancel(const ServiceClient& client, Slot& slot, const ServiceJson& id) {
    if (running_.slot && running_.client == &client && running_.slot->id == id) {
        failure_ = "cancelled";
        failure_code_ = exit_signal + 2;
        stop_worker();
        return answer(slot, exit_done, "");
    }
    const auto found = std::find_if(queue_.begin(), queue_.end(), [&](const Work& work) {
        return work.client == &client && work.slot->id == id;
    });
    if (found == queue_.end())
        return answer(slot, exit_usage, "no such request waits or runs");
    answer(*found->slot, exit_signal + 2, "cancelled");
    queue_.erase(found);
    answer(slot, exit_done, "");
}

void Service::give_work() {
    if (running_.slot || stopped_ != Clock::time_point())
        return;
    // A client that does not read its answers waits; the others do not.
    const auto next = std::find_if(queue_.begin(), queue_.end(), [](const Work& work) {
        return work.client->unsent.size() <= k_most_unsent;
    });
    if (next == queue_.end())
        return;
    running_ = *next;
    queue_.erase(next);
    began_ = Clock::now();
    std::string error;
    if (!worker_.is_running() && !worker_.start({program_file(), "worker"}, error)) {
        answer(*running_.slot, exit_unexpected, error);
        running_ = {};
        return;
    }
    Slot& slot = *running_.slot;
    // A worker that has ended shows when its answer is missing.
    if (worker_.send(slot.work) && !slot.mesh_line.empty())
        worker_.send(slot.mesh_line);
    slot.work = slot.mesh_line = std::string();
}

void Service::take_answers() {
    std::string line;
    while (worker_.take_line(line)) {
        if (!running_.slot || line.rfind("{\"code\":", 0) != 0)
            continue; // something that a library printed
        running_.slot->answer = "{\"id\":" + running_.slot->id.dump() + "," + line.substr(1);
        running_ = {};
    }
    if (worker_.has_ended(line))
        end_work(line);
}

/// The worker has ended; what it had to do is answered.
void Service::end_work(const std::string& how) {
    if (running_.slot && stopped_ != Clock::time_point())
        answer(*running_.slot, failure_code_, failure_);
    else if (running_.slot)
        answer(*running_.slot, exit_bug, "the process that unwrapped it ended " + how);
    running_ = {};
    stopped_ = Clock::time_point();
}

void Service::check_time() {
    const Clock::time_point now = Clock::now();
    const double limit = request_.time_limit;
    if (stopped_ != Clock::time_point()) {
        if (now - stopped_ > k_time_to_end)
            worker_.kill();
    } else if (running_.slot && limit > 0.0 &&
               std::chrono::duration<double>(now - began_).count() > limit) {
        char text[64];
        std::snprintf(text, sizeof text, "not finished within the time limit of %g s", limit);
        failure_ = text;
        failure_code_ = exit_limit;
        stop_worker();
    }
}

void Service::send_answers(ServiceClient& client) {
    std::deque<SlotRef>& slots = states_[&client].slots;
    while (!slots.empty() && !slots.front()->answer.empty()) {
        client.unsent += slots.front()->answer + "\n";
        slots.pop_front();
    }
}

/// A client that is gone gives up its requests.
void Service::forget(const ServiceClient& client) {
    queue_.erase(std::remove_if(queue_.begin(), queue_.end(),
                                [&](const Work& work) { return work.client == &client; }),
                 queue_.end());
    if (running_.slot && running_.client == &client) {
        running_.client = nullptr;
        stop_worker();
    }
    states_.erase(&client);
}

int Service::wait_milliseconds() const {
    const bool is_ending =
        stopped_ != Clock::time_point() || (worker_.is_running() && worker_.output_file() < 0);
    return is_ending || (running_.slot && request_.time_limit > 0.0) ? k_soon_milliseconds
                                                                     : k_idle_milliseconds;
}

/// Gives a worker that is busy the time to remove its unfinished files.
void Service::end_worker() {
    if (!running_.slot)
        return;
    stop_worker();
    std::string ignored;
    while (!worker_.has_ended(ignored) && Clock::now() - stopped_ < k_time_to_end)
        wait_for_children({&worker_}, k_soon_milliseconds);
}

bool Service::open(std::string& error) {
    if (!request_.socket.empty())
        return streams_.listen(request_.socket, error);
    streams_.open_standard();
    return true;
}

int Service::run() {
    std::string error;
    if (!open(error)) {
        say(error);
        return exit_output;
    }
    defer_signals();
    while (!deferred_signal()) {
        take_answers();
        for (const auto& client : streams_.clients())
            take_lines(*client);
        check_time();
        give_work();
        for (const auto& client : streams_.clients()) {
            send_answers(*client);
            if (client->is_gone)
                forget(*client);
            output_is_closed_ |= client->is_gone;
        }
        streams_.remove_clients([&](const ServiceClient& client) {
            const bool is_idle = states_[&client].slots.empty() && client.received.empty();
            if (is_idle)
                states_.erase(&client);
            return is_idle;
        });
        if (request_.socket.empty() && streams_.clients().empty())
            return output_is_closed_ ? exit_output : exit_done;
        streams_.wait(worker_, wait_milliseconds());
    }
    end_worker();
    return exit_signal + deferred_signal();
}

} // namespace

CommandHelp serve_help() {
    ServeRequest defaults;
    return {k_usage, make_table(defaults), k_notes};
}

int serve_command(const Words& words) {
    ServeRequest request;
    std::string error;
    if (!parse(words, request, error)) {
        say(error + "\nsee 'tessora serve --help'");
        return exit_usage;
    }
    if (request.help) {
        std::fputs(serve_help().text().c_str(), stdout);
        return exit_done;
    }
    return Service(request).run();
}

} // namespace app
