// The floor for whole-process timings: the least a parallel walk can do. Sums st_blocks x 512
// of every non-folder, non-link entry under PATH with a few threads sharing a stack of paths
// (opendir/readdir/fstatat), and prints the sum. No tree, no exclusions, no progress.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

int main(int argc, char** argv) {
    if (argc != 2) return std::fprintf(stderr, "usage: bench_bare_walk PATH\n"), 2;
    std::vector<std::string> stack{argv[1]};
    std::mutex m;
    std::condition_variable cv;
    int busy = 0;
    std::atomic<long long> total{0};
    auto worker = [&] {
        for (;;) {
            std::string dir;
            {
                std::unique_lock lock(m);
                cv.wait(lock, [&] { return !stack.empty() || busy == 0; });
                if (stack.empty()) return;
                dir = std::move(stack.back());
                stack.pop_back();
                ++busy;
            }
            std::vector<std::string> found;
            long long sum = 0;
            if (DIR* d = ::opendir(dir.c_str())) {
                const int fd = ::dirfd(d);
                while (dirent* e = ::readdir(d)) {
                    if (e->d_name[0] == '.' && (!e->d_name[1] || (e->d_name[1] == '.' && !e->d_name[2]))) continue;
                    if (e->d_type == DT_DIR) { found.push_back(dir + "/" + e->d_name); continue; }
                    if (e->d_type == DT_LNK) continue;
                    struct stat st;
                    if (::fstatat(fd, e->d_name, &st, AT_SYMLINK_NOFOLLOW) == 0 && !S_ISDIR(st.st_mode)) sum += st.st_blocks * 512LL;
                }
                ::closedir(d);
            }
            total += sum;
            {
                std::lock_guard lock(m);
                --busy;
                for (auto& f : found) stack.push_back(std::move(f));
            }
            cv.notify_all();
        }
    };
    const unsigned n = std::max(2u, std::thread::hardware_concurrency());
    std::vector<std::thread> pool;
    for (unsigned i = 0; i < n; ++i) pool.emplace_back(worker);
    for (auto& t : pool) t.join();
    std::printf("%lld\n", total.load());
}
