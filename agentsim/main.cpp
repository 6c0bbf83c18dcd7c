// The stand-in Agent: options, signals, event sources, the socket, then service until a signal.
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <malloc.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/stat.h>

#include "agentsim/console.h"
#include "agentsim/event.h"
#include "agentsim/generator.h"
#include "agentsim/kmsg_feeder.h"
#include "agentsim/line_feeder.h"
#include "agentsim/listening_socket.h"
#include "agentsim/options.h"
#include "agentsim/server.h"

namespace
{

using namespace agentsim;
using Sources = std::vector<std::unique_ptr<EventSource>>;

constexpr int k_exit_failed = 1;
constexpr int k_exit_usage = 2;

// How long a source that never runs dry may keep the Agent from serving.
constexpr int64_t k_backlog_time = 5 * k_nanoseconds;

bool complain(const std::string &what)
{
    fprintf(stderr, "ruklog-agentsim: %s\n", what.c_str());
    return false;
}

bool complain_errno(const std::string &what)
{
    return complain(what + ": " + strerror(errno));
}

// Removes the file of the process id at the end.
class PidFile
{
public:
    PidFile() = default;
    PidFile(const PidFile &) = delete;
    PidFile &operator=(const PidFile &) = delete;
    ~PidFile()
    {
        if (!path_.empty()) {
            unlink(path_.c_str());
        }
    }

    bool write(const std::string &path)
    {
        FILE *file = fopen(path.c_str(), "we");
        if (file == nullptr) {
            return complain_errno("cannot write " + path);
        }
        path_ = path;
        const bool written = fprintf(file, "%d\n", getpid()) > 0;
        return (fclose(file) == 0 && written) || complain_errno("cannot write " + path);
    }

private:
    std::string path_;
};

// A descriptor that can be read once the process is to stop.
UniqueFd stop_signals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    // Whoever starts the Agent with SIGHUP ignored (nohup) wants it to outlive the terminal.
    struct sigaction hangup {
    };
    sigaction(SIGHUP, nullptr, &hangup);
    if (hangup.sa_handler != SIG_IGN) {
        sigaddset(&signals, SIGHUP);
    }
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    // A reader of standard output that went away is no reason to stop.
    signal(SIGPIPE, SIG_IGN);
    return UniqueFd(signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC));
}

// The room of a long request goes back to the host with its connection.  Left alone, the C library
// takes such room from the heap once it has seen it freed, where it stays.
void give_room_back()
{
#ifdef M_MMAP_THRESHOLD
    constexpr int k_long = 64 * 1024;
    mallopt(M_MMAP_THRESHOLD, k_long);
#endif
}

// Logs what waits in source already.  False: source has ended.
bool collect_backlog(EventSource &source, LogService &service)
{
    const int64_t deadline = monotonic_time() + k_backlog_time;
    pollfd wait{.fd = source.descriptor(), .events = POLLIN, .revents = 0};
    while (poll(&wait, 1, 0) > 0 && monotonic_time() < deadline) {
        if (!source.collect(service, 0)) {
            return false;
        }
    }
    return true;
}

bool add_feed(const std::string &path, Ending ending, LogService &service, Sources &sources)
{
    // A pipe without a writer must not keep the Agent from serving.
    UniqueFd file(path == "-" ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                              : open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {
    };
    if (!file || fstat(file.get(), &status) != 0) {
        return complain_errno("cannot read " + path);
    }
    if (S_ISDIR(status.st_mode)) {
        return complain("cannot read " + path + ": it is a directory");
    }
    auto feeder = std::make_unique<LineFeeder>(std::move(file), ending);
    if (!S_ISREG(status.st_mode) || collect_backlog(*feeder, service)) {
        sources.push_back(std::move(feeder));
    }
    return true;
}

bool add_kmsg(LogService &service, Sources &sources)
{
    constexpr const char *k_path = "/dev/kmsg";
    UniqueFd kmsg(open(k_path, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!kmsg) {
        return complain_errno(std::string("cannot read ") + k_path +
                              " (it may need to run as root)");
    }
    auto feeder = std::make_unique<KmsgFeeder>(std::move(kmsg), wall_time() - monotonic_time());
    if (collect_backlog(*feeder, service)) {
        sources.push_back(std::move(feeder));
    }
    return true;
}

// What happened earliest is logged first.
bool add_sources(const Options &options, LogService &service, Sources &sources)
{
    const Ending ending = options.no_line_feed ? Ending::AS_IT_IS : Ending::LINE_FEED;
    if ((options.kmsg && !add_kmsg(service, sources)) ||
        (!options.feed.empty() && !add_feed(options.feed, ending, service, sources))) {
        return false;
    }
    auto generator = std::make_unique<Generator>();
    generator->preload(service, options.preload);
    generator->start(static_cast<uint32_t>(options.rate), monotonic_time());
    sources.push_back(std::move(generator));
    return true;
}

ModuleTable modules_of(const Options &options)
{
    return options.modules == Options::k_standard_modules
               ? ModuleTable::standard()
               : ModuleTable::generated(static_cast<uint32_t>(options.modules));
}

int run(const Options &options)
{
    give_room_back();
    const UniqueFd stop = stop_signals();
    ListeningSocket listener;
    PidFile pidfile;
    if (const std::string error = listener.open(options.socket); !error.empty()) {
        complain(error);
        return k_exit_failed;
    }
    LogService service(EventLog(static_cast<uint32_t>(options.capacity), options.first_entry),
                       modules_of(options), options.identity);
    Sources sources;
    if (!add_sources(options, service, sources) ||
        (!options.pidfile.empty() && !pidfile.write(options.pidfile))) {
        return k_exit_failed;
    }
    printf("ruklog-agentsim: serving %s\n", options.socket.c_str());
    fflush(stdout);
    if (options.console) {
        auto console = std::make_unique<Console>(STDIN_FILENO, service);
        console->prompt();
        sources.push_back(std::move(console));
    }
    Server server(listener.get(), stop.get(), service, std::move(sources));
    return server.run() || complain_errno("cannot wait for clients") ? 0 : k_exit_failed;
}

} // namespace

int main(int argc, char **argv)
{
    Options options;
    const std::string error =
        parse_options({argv + (argc > 0 ? 1 : 0), argv + (argc > 0 ? argc : 0)}, options);
    if (!error.empty()) {
        complain(error);
        return k_exit_usage;
    }
    if (options.help) {
        fputs(k_help, stdout);
        return 0;
    }
    return run(options);
}
