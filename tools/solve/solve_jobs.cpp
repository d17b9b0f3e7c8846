/*
 * Many logs in parallel. See solve_jobs.h.
 */
#include "solve_jobs.h"

#include <atomic>
#include <cerrno>
#include <mutex>
#include <set>
#include <sys/stat.h>
#include <thread>

namespace solve {

std::string outputPath(const std::string& log, const std::string& dir, Format f) {
    const std::size_t slash = log.find_last_of('/');
    std::string name = slash == std::string::npos ? log : log.substr(slash + 1);
    const std::string ext = ".zlog";
    if (name.size() > ext.size() && name.compare(name.size() - ext.size(), ext.size(), ext) == 0)
        name.resize(name.size() - ext.size());
    return (dir.empty() ? std::string(".") : dir) + "/" + name + "." + formatExtension(f);
}

int runJobs(const std::vector<std::string>& logs, int jobs, const std::string& dir,
            const Options& opt, std::FILE* err) {
    std::vector<std::string> outs;
    std::set<std::string> seen;
    for (const std::string& log : logs) {
        outs.push_back(outputPath(log, dir, opt.format));
        if (!seen.insert(outs.back()).second) {
            std::fprintf(err, "zelnav solve: two logs would both write %s\n", outs.back().c_str());
            return 2;
        }
    }
    if (!dir.empty() && ::mkdir(dir.c_str(), 0777) != 0 && errno != EEXIST) {
        std::fprintf(err, "zelnav solve: cannot make the folder %s\n", dir.c_str());
        return 2;
    }

    std::atomic<std::size_t> nextLog(0);
    std::atomic<int> failed(0);
    std::mutex errLock;
    std::size_t done = 0;   /* under errLock */
    auto worker = [&]() {
        for (std::size_t i; (i = nextLog++) < logs.size();) {
            std::string report, outcome;
            Totals t;
            int rc = 1;
            std::FILE* out = std::fopen(outs[i].c_str(), "w");
            std::FILE* held = std::tmpfile();
            if (out == nullptr || held == nullptr) {
                outcome = "cannot write " + outs[i];
            } else {
                rc = run(logs[i], opt, out, held, &t);
                if (std::fclose(out) != 0) rc = 1;
                out = nullptr;
                report = slurp(held);
                char line[160];
                std::snprintf(line, sizeof line, "%ld epochs, %ld fixes, %ld skipped", t.epochs,
                              t.fixes, t.refused + t.logProblems);
                outcome = rc == 0 ? line : "could not be read";
            }
            if (out) std::fclose(out);
            if (held) std::fclose(held);
            if (rc != 0) failed++;
            std::lock_guard<std::mutex> lock(errLock);
            std::fputs(report.c_str(), err);
            std::fprintf(err, "zelnav solve: [%zu/%zu] %s -> %s: %s\n", ++done, logs.size(),
                         logs[i].c_str(), outs[i].c_str(), outcome.c_str());
            std::fflush(err);
        }
    };
    if (jobs < 1) jobs = 1;
    if ((std::size_t)jobs > logs.size()) jobs = (int)logs.size();
    std::vector<std::thread> pool;
    for (int j = 1; j < jobs; j++) pool.emplace_back(worker);
    worker();
    for (std::thread& th : pool) th.join();
    return failed ? 1 : 0;
}

}  // namespace solve
