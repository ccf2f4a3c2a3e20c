// The duplicate scan's hashing against the bare SHA-256 it is built on: how much reading a
// file through the page cache in 1 MiB chunks adds to hashing the same bytes in memory.
// The file is written once under /tmp and stays in the cache between iterations.
#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <openssl/evp.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "duplicates/ContentHasher.h"
#include "foundation/CancellationFlag.h"

namespace {

constexpr std::size_t kFileBytes = 256u << 20;

const std::string& cachedFile() {
    static const std::string path = [] {
        std::string p = "/tmp/brimvale-bench-hash-" + std::to_string(::getpid());
        std::vector<unsigned char> block(1 << 20);
        for (std::size_t i = 0; i < block.size(); ++i) block[i] = static_cast<unsigned char>(i * 131 + 7);
        const int fd = ::open(p.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        for (std::size_t done = 0; done < kFileBytes; done += block.size())
            if (::write(fd, block.data(), block.size()) < 0) break;
        ::close(fd);
        return p;
    }();
    return path;
}

void FullHashFromPageCache(benchmark::State& state) {
    bv::ContentHasher hasher;
    bv::CancellationFlag flag;
    const auto& path = cachedFile();
    for (auto _ : state) benchmark::DoNotOptimize(hasher.fullHash(path, flag));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kFileBytes));
}
BENCHMARK(FullHashFromPageCache)->Unit(benchmark::kMillisecond);

void Sha256InMemory(benchmark::State& state) {
    std::vector<unsigned char> block(1 << 20, 0x5a);
    EVP_MD* md = EVP_MD_fetch(nullptr, "SHA256", nullptr);
    EVP_MD_CTX* ctx = EVP_MD_CTX_new();
    unsigned char out[32];
    unsigned int length = 0;
    for (auto _ : state) {
        EVP_DigestInit_ex(ctx, md, nullptr);
        for (std::size_t done = 0; done < kFileBytes; done += block.size()) EVP_DigestUpdate(ctx, block.data(), block.size());
        EVP_DigestFinal_ex(ctx, out, &length);
        benchmark::DoNotOptimize(out);
    }
    EVP_MD_CTX_free(ctx);
    EVP_MD_free(md);
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kFileBytes));
}
BENCHMARK(Sha256InMemory)->Unit(benchmark::kMillisecond);

void QuickKeysOfManyFiles(benchmark::State& state) {
    bv::ContentHasher hasher;
    const auto& path = cachedFile();
    for (auto _ : state)
        for (int i = 0; i < 1000; ++i) benchmark::DoNotOptimize(hasher.quickKey(path, static_cast<std::int64_t>(kFileBytes)));
    state.SetItemsProcessed(state.iterations() * 1000);
}
BENCHMARK(QuickKeysOfManyFiles)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    ::unlink(cachedFile().c_str());
    return 0;
}
