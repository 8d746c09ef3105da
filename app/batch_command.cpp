#include "app/batch_command.h"

#include "app/atomic_file.h"
#include "app/batch_page.h"
#include "app/batch_plan.h"
#include "app/child_process.h"
#include "app/command.h"
#include "app/exit_code.h"
#include "app/fingerprint.h"
#include "app/interrupt.h"
#include "app/mesh_rows.h"
#include "app/progress_display.h"
#include "app/report.h"
#include "app/request_json.h"
#include "app/system.h"
#include "app/unwrap_driver.h"
#include "host/io/obj_reader.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <thread>

namespace app {
namespace {

using Json = nlohmann::ordered_json;
using Clock = std::chrono::steady_clock;

constexpr int k_poll_milliseconds = 50;
constexpr std::chrono::seconds k_time_to_end{5}; ///< for a worker that was asked to end

double seconds_since(Clock::time_point begin) {
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

std::string dumped(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string duration_text(double seconds) {
    const int whole = int(std::ceil(seconds));
    char text[32];
    if (whole < 100)
        std::snprintf(text, sizeof text, "%d s", whole);
    else if (whole < 6000)
        std::snprintf(text, sizeof text, "%d min", (whole + 59) / 60);
    else
        std::snprintf(text, sizeof text, "%d h %d min", whole / 3600, whole % 3600 / 60);
    return text;
}

/// A worker process and the mesh it has.
struct Worker {
    ChildProcess process;
    bool is_busy = false;
    size_t item = 0;
    Clock::time_point began;
    bool is_over_time = false; ///< it was asked to end because of the time limit
    bool was_killed = false;
};

class Batch {
public:
    Batch(const UnwrapRequest& request, std::vector<BatchItem> items)
        : request_(request), batch_(request.batch), items_(std::move(items)),
          // Without a terminal the line of each mesh says how far the batch is.
          progress_(ProgressDisplay::style_for_stderr(false) == ProgressDisplay::bar &&
                            !request.quiet && !batch_.json_lines
                        ? ProgressDisplay::bar
                        : ProgressDisplay::silent,
                    "batch") {}

    int run();
    int print_plan() const;

private:
    struct Failure {
        std::string input, reason;
        int code;
    };
    UnwrapRequest request_for(const BatchItem& item) const;
    bool is_up_to_date(const BatchItem& item, Json& report) const;
    void give_work();
    bool give_next(Worker& worker);
    void take_answers(Worker& worker);
    void check_time(Worker& worker);
    void finish(size_t item, const Json& answer, double seconds);
    void fail_without_report(size_t item, int code, const std::string& reason, double seconds);
    void tell(const BatchItem& item, const char* status, const Json& answer, double seconds);
    std::string remaining_time() const;
    void add_row(const BatchItem& item, const char* status, const Json& report);
    void end_workers();
    bool write_page_of_batch();
    int summary();
    bool may_go_on() const {
        return !deferred_signal() && !(batch_.fail_fast && !failures_.empty());
    }
    bool has_busy_worker() const {
        return std::any_of(workers_.begin(), workers_.end(),
                           [](const Worker& worker) { return worker.is_busy; });
    }

    const UnwrapRequest& request_;
    const BatchRequest& batch_;
    std::vector<BatchItem> items_;
    std::vector<Worker> workers_;
    ProgressDisplay progress_;
    Clock::time_point began_ = Clock::now();
    size_t next_ = 0; ///< the first item not yet begun
    size_t done_ = 0, skipped_ = 0;
    std::vector<Failure> failures_;
    std::vector<std::vector<Json>> rows_; ///< for the page, if there is one
};

UnwrapRequest Batch::request_for(const BatchItem& item) const {
    UnwrapRequest request;
    request.settings = request_.settings;
    request.in_place = request_.in_place;
    request.threads = request_.threads > 0 ? request_.threads : 1; // the processes share the work
    request.picture = request_.picture;
    if (!batch_.html.empty())
        request.thumbnails = picture_folder(batch_.html);
    request.max_input = request_.max_input;
    request.input = item.input;
    request.output = item.output;
    request.report = item.report;
    request.layout = item.layout;
    return request;
}

/// The report beside the result tells of which input, with which settings and by which version it
/// was made.
bool Batch::is_up_to_date(const BatchItem& item, Json& report) const {
    std::string text;
    host::IoError failure;
    if (!file_exists(item.report) || !host::read_text(item.report, text, failure))
        return false;
    report = Json::parse(text, nullptr, false);
    const auto is = [&](const char* key, const Json& value) {
        const auto found = report.find(key);
        return found != report.end() && *found == value;
    };
    if (!report.is_object() || !report.contains("hashes") ||
        !is("program", std::string("tessora ") + version()) || !is("status", "ok") ||
        !is("settings", settings_to_json(in_range(request_.settings))))
        return false;
    const Json hashes = report["hashes"];
    if (!hashes.is_object() || (!item.layout.empty() && !file_exists(item.layout)) ||
        (!batch_.html.empty() &&
         !file_exists(picture_folder(batch_.html) + "/" + thumbnails_name(report))))
        return false;
    const Json files = hashes.value("files", Json::object());
    for (const auto& [path, hash] : files.items())
        if (hash != file_fingerprint(path))
            return false;
    // What was unwrapped in place is its own result.
    const std::string output = file_fingerprint(item.output);
    return !output.empty() && hashes.value("output", Json()) == output &&
           (request_.in_place || hashes.value("input", Json()) == file_fingerprint(item.input));
}

int Batch::print_plan() const {
    size_t to_do = 0;
    Json report;
    for (const BatchItem& item : items_) {
        const bool skip = batch_.skip_existing && is_up_to_date(item, report);
        to_do += !skip;
        if (batch_.json_lines)
            std::printf("%s\n", dumped({{"input", item.input},
                                        {"output", item.output},
                                        {"report", item.report},
                                        {"status", skip ? "up to date" : "planned"}})
                                    .c_str());
        else
            std::printf("%s -> %s%s\n", one_line(item.input).c_str(), one_line(item.output).c_str(),
                        skip ? " (up to date)" : "");
    }
    if (!request_.quiet)
        say(std::to_string(to_do) + " of " + std::to_string(items_.size()) +
            " to do; nothing was written");
    return exit_done;
}

/// Gives a worker the next mesh that is not up to date. Returns false if there is none.
bool Batch::give_next(Worker& worker) {
    while (next_ < items_.size() && may_go_on()) {
        const size_t index = next_++;
        const BatchItem& item = items_[index];
        if (Json report; batch_.skip_existing && is_up_to_date(item, report)) {
            ++skipped_;
            tell(item, "skipped", {{"report", report}}, 0.0);
            continue;
        }
        std::string line, error;
        try {
            line = request_to_json(request_for(item)).dump();
        } catch (const Json::type_error&) {
            fail_without_report(index, exit_input,
                                "its name is not valid UTF-8, which a batch needs", 0.0);
            continue;
        }
        std::error_code failure; // shows when the result cannot be written
        std::filesystem::create_directories(std::filesystem::path(item.output).parent_path(),
                                            failure);
        if (!worker.process.is_running() &&
            !worker.process.start({program_file(), "worker"}, error)) {
            fail_without_report(index, exit_unexpected, error, 0.0);
            continue;
        }
        worker.is_busy = true;
        worker.item = index;
        worker.began = Clock::now();
        worker.is_over_time = worker.was_killed = false;
        worker.process.send(line); // a worker that has ended shows when its answer is missing
        return true;
    }
    return false;
}

void Batch::give_work() {
    for (Worker& worker : workers_)
        if (!worker.is_busy && !give_next(worker))
            return;
}

void Batch::take_answers(Worker& worker) {
    std::string text;
    while (worker.process.take_line(text)) {
        const Json answer = Json::parse(text, nullptr, false);
        if (!worker.is_busy || !answer.is_object())
            continue; // something that a library printed
        worker.is_busy = false;
        finish(worker.item, answer, seconds_since(worker.began));
    }
    if (!worker.process.has_ended(text) || !worker.is_busy)
        return;
    worker.is_busy = false;
    if (deferred_signal() || (worker.was_killed && !worker.is_over_time))
        return; // interrupted: neither done nor failed
    const bool late = worker.is_over_time;
    char limit[32];
    std::snprintf(limit, sizeof limit, "%g s", batch_.time_limit);
    fail_without_report(worker.item, late ? exit_limit : exit_bug,
                        late ? std::string("not finished within the time limit of ") + limit
                             : "the process that unwrapped it ended " + text,
                        seconds_since(worker.began));
}

void Batch::check_time(Worker& worker) {
    if (!worker.is_busy || batch_.time_limit <= 0.0)
        return;
    const double seconds = seconds_since(worker.began);
    if (!worker.is_over_time && seconds > batch_.time_limit) {
        worker.is_over_time = true;
        worker.process.terminate();
    } else if (worker.is_over_time && !worker.was_killed &&
               seconds > batch_.time_limit + double(k_time_to_end.count())) {
        worker.was_killed = true;
        worker.process.kill();
    }
}

/// For failures of which the worker could not write a report.
void Batch::fail_without_report(size_t index, int code, const std::string& reason, double seconds) {
    const BatchItem& item = items_[index];
    UnwrapReport report;
    report.input = item.input;
    report.settings = in_range(request_.settings);
    report.code = code;
    report.reason = item.input + ": " + reason;
    AtomicFile file;
    std::string error;
    const std::string text = to_json(report);
    if (!file.open(item.report, error) || !file.write(text, error) || !file.commit(error))
        say(error);
    finish(index, {{"code", code}, {"reason", report.reason}, {"report", Json::parse(text)}},
           seconds);
}

void Batch::finish(size_t index, const Json& answer, double seconds) {
    const BatchItem& item = items_[index];
    const int code = answer.value("code", int(exit_unexpected));
    if (code == exit_done)
        ++done_;
    else
        failures_.push_back({item.input, answer.value("reason", ""), code});
    tell(item, code == exit_done ? "ok" : "failed", answer, seconds);
}

/// About how long the rest takes, if the rest is like what is done; "" if nothing is known.
std::string Batch::remaining_time() const {
    const size_t worked = done_ + failures_.size(), left = items_.size() - worked - skipped_;
    if (worked == 0 || left == 0)
        return "";
    return ", about " + duration_text(seconds_since(began_) / double(worked) * double(left)) +
           " left";
}

void Batch::tell(const BatchItem& item, const char* status, const Json& answer, double seconds) {
    const Json report = answer.value("report", Json::object());
    add_row(item, status, report);
    if (batch_.json_lines) {
        Json line = {{"input", item.input},
                     {"output", item.output},
                     {"report", item.report},
                     {"status", status},
                     {"seconds", seconds}};
        for (const char* key : {"code", "reason", "triangles", "charts", "stretch", "warnings"})
            if (report.contains(key))
                line[key] = report[key];
        std::printf("%s\n", dumped(line).c_str());
        std::fflush(stdout);
    }
    if (request_.quiet || batch_.json_lines)
        return;
    const bool is_skipped = status[0] == 's';
    for (const Json& warning : report.value("warnings", Json::array()))
        if (!is_skipped)
            say("warning: " + warning.get<std::string>());
    if (answer.value("code", 0) == exit_done) // else the last message is the reason
        for (const Json& message : answer.value("messages", Json::array()))
            say(item.input + ": " + message.get<std::string>());
    const size_t count = done_ + skipped_ + failures_.size();
    std::string line = item.input + ": " + status;
    if (report.contains("charts") && !is_skipped) {
        char stretch[32];
        std::snprintf(stretch, sizeof stretch, "%.4f", report["stretch"].get<double>());
        line = item.input + ": charts " + report["charts"].dump() + ", stretch " + stretch;
    } else if (status[0] == 'f') {
        line = "failed: " + answer.value("reason", "");
    }
    say(line + " (" + std::to_string(count) + " of " + std::to_string(items_.size()) +
        remaining_time() + ")");
    if (count < items_.size())
        progress_.begin_stage(std::to_string(count) + " of " + std::to_string(items_.size()) +
                              remaining_time());
    progress_.set_percent(int(100 * count / items_.size()));
}

void Batch::add_row(const BatchItem& item, const char* status, const Json& report) {
    if (batch_.html.empty())
        return;
    Json row = mesh_row(report, item.report);
    row["input"] = item.input;
    row["status"] = status;
    rows_.push_back({std::move(row)});
}

void Batch::end_workers() {
    for (Worker& worker : workers_) {
        if (worker.is_busy) {
            worker.was_killed = true;
            worker.process.terminate();
        } else {
            worker.process.close_input();
        }
    }
    const Clock::time_point began = Clock::now();
    const auto is_running = [](const Worker& worker) { return worker.process.is_running(); };
    while (std::any_of(workers_.begin(), workers_.end(), is_running) &&
           Clock::now() - began < k_time_to_end) {
        std::vector<ChildProcess*> children;
        for (Worker& worker : workers_)
            if (worker.process.is_running())
                children.push_back(&worker.process);
        wait_for_children(children, k_poll_milliseconds);
        for (Worker& worker : workers_)
            take_answers(worker);
    }
    workers_.clear(); // ends those that remain at once
}

/// Also after an interrupt: the page then shows what was done.
bool Batch::write_page_of_batch() {
    if (batch_.html.empty())
        return true;
    std::sort(rows_.begin(), rows_.end(), [](const auto& a, const auto& b) {
        return a[0]["input"].template get_ref<const std::string&>() <
               b[0]["input"].template get_ref<const std::string&>();
    });
    BatchPage page;
    page.folder = batch_.html;
    page.not_done = items_.size() - rows_.size();
    if (batch_.shard_count > 1) {
        page.name = "shard-" + std::to_string(batch_.shard_index) + "-of-" +
                    std::to_string(batch_.shard_count);
        page.rows_name = page.name + ".jsonl";
    }
    const std::string name = page.name;
    page.meshes = std::move(rows_);
    const bool is_whole = batch_.shard_count == 1 && page.not_done == 0;
    std::string error;
    if (!write_page(std::move(page), error)) {
        say(error);
        return false;
    }
    if (is_whole)
        sweep_pictures(batch_.html);
    if (!request_.quiet && !batch_.json_lines)
        say("page:    " + batch_.html + "/" + name + ".html");
    return true;
}

int Batch::summary() {
    progress_.clear();
    const bool has_page = write_page_of_batch();
    const size_t left = items_.size() - done_ - skipped_ - failures_.size();
    const int signal = deferred_signal();
    if (batch_.json_lines)
        std::printf("%s\n", dumped({{"summary", true},
                                    {"done", done_},
                                    {"skipped", skipped_},
                                    {"failed", failures_.size()},
                                    {"not_begun_or_unfinished", left},
                                    {"seconds", seconds_since(began_)}})
                                .c_str());
    if (!failures_.empty()) {
        say(std::to_string(failures_.size()) + " of " + std::to_string(items_.size()) + " failed:");
        for (const Failure& failure : failures_)
            say("code " + std::to_string(failure.code) + ": " + failure.reason);
    }
    std::string line = std::to_string(done_) + " done, " + std::to_string(skipped_) +
                       " up to date, " + std::to_string(failures_.size()) + " failed";
    if (left > 0)
        line += ", " + std::to_string(left) + " not done";
    line += " in " + duration_text(seconds_since(began_));
    if (signal)
        line += "; interrupted: the same command with --skip_existing goes on";
    if (!request_.quiet || signal)
        say(line);
    if (signal)
        return exit_signal + signal;
    return !failures_.empty() ? exit_unexpected : has_page ? exit_done : exit_output;
}

int Batch::run() {
    defer_signals();
    const size_t processors = std::max(1u, std::thread::hardware_concurrency());
    const size_t jobs = batch_.jobs > 0 ? size_t(batch_.jobs) : processors;
    workers_.resize(std::min(jobs, std::max<size_t>(1, items_.size())));
    for (;;) {
        give_work();
        if (!has_busy_worker() || !may_go_on())
            break;
        std::vector<ChildProcess*> children;
        for (Worker& worker : workers_)
            if (worker.is_busy)
                children.push_back(&worker.process);
        wait_for_children(children, k_poll_milliseconds);
        for (Worker& worker : workers_) {
            check_time(worker);
            take_answers(worker);
        }
    }
    end_workers();
    return summary();
}

} // namespace

int run_batch(const UnwrapRequest& request) {
    std::vector<BatchItem> items;
    std::string left_out, error;
    if (const int code = plan_batch(request, items, left_out, error)) {
        say(error + (code == exit_usage ? "; nothing was done" : ""));
        return code;
    }
    if (!left_out.empty() && !request.quiet)
        say("warning: " + left_out);
    return run_batch(request, std::move(items));
}

int run_batch(const UnwrapRequest& request, std::vector<BatchItem> items) {
    if (!request.quiet)
        for (const std::string& warning : request.warnings)
            say("warning: " + warning);
    std::string error;
    if (!request.batch.html.empty() && !request.batch.dry_run &&
        !make_page_folders(request.batch.html, error)) {
        say(error);
        return exit_output;
    }
    Batch batch(request, std::move(items));
    return request.batch.dry_run ? batch.print_plan() : batch.run();
}

} // namespace app
