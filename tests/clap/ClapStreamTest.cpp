// The state streams' loops against hosts that move any number of bytes per call, stop
// early, fail, or claim more than they were asked.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "clap/ClapStream.h"

namespace tw::clap {
namespace {

// A host's stream: moves at most `step` bytes per call; answers `failWith` from call
// `failAt` on (counting from 0).
struct HostStream {
    std::string bytes;
    std::size_t position = 0, step = 1;
    int calls = 0, failAt = -1;
    std::int64_t failWith = -1;
    std::int64_t next(std::uint64_t size) {
        if (failAt >= 0 && calls++ >= failAt) return failWith;
        return static_cast<std::int64_t>(std::min<std::uint64_t>(size, step));
    }
};

clap_ostream_t writerOf(HostStream& h) {
    return {&h, [](const clap_ostream_t* s, const void* buffer, std::uint64_t size) -> std::int64_t {
                auto& h = *static_cast<HostStream*>(s->ctx);
                const std::int64_t n = h.next(size);
                if (n > 0) h.bytes.append(static_cast<const char*>(buffer), static_cast<std::size_t>(std::min<std::uint64_t>(n, size)));
                return n;
            }};
}

clap_istream_t readerOf(HostStream& h) {
    return {&h, [](const clap_istream_t* s, void* buffer, std::uint64_t size) -> std::int64_t {
                auto& h = *static_cast<HostStream*>(s->ctx);
                std::int64_t n = h.next(size);
                if (n <= 0) return n;
                n = std::min<std::int64_t>(n, static_cast<std::int64_t>(h.bytes.size() - h.position));
                std::memcpy(buffer, h.bytes.data() + h.position, static_cast<std::size_t>(n));
                h.position += static_cast<std::size_t>(n);
                return n;
            }};
}

std::string sample(std::size_t n) {
    std::string s;
    for (std::size_t i = 0; i < n; ++i) s.push_back(static_cast<char>(i * 7 + 3));
    return s;
}

TEST(ClapStream, WritesAndReadsWholeAtAnyStep) {
    const std::string bytes = sample(200000);
    for (std::size_t step : {std::size_t(1), std::size_t(3), std::size_t(65536), std::size_t(1) << 30}) {
        SCOPED_TRACE(step);
        HostStream out;
        out.step = step;
        const clap_ostream_t writer = writerOf(out);
        ASSERT_TRUE(writeWhole(&writer, bytes));
        EXPECT_EQ(out.bytes, bytes);

        HostStream in;
        in.bytes = bytes;
        in.step = step;
        const clap_istream_t reader = readerOf(in);
        std::string read;
        ASSERT_TRUE(readWhole(&reader, read, bytes.size()));
        EXPECT_EQ(read, bytes);
    }
}

TEST(ClapStream, AHostsErrorOrStallEndsTheLoopWithAFailure) {
    const std::string bytes = sample(1000);
    for (std::int64_t answer : {std::int64_t(-1), std::int64_t(0)}) {
        HostStream out;
        out.failAt = 5;
        out.failWith = answer;
        const clap_ostream_t writer = writerOf(out);
        EXPECT_FALSE(writeWhole(&writer, bytes)) << "write answering " << answer;
    }
    // A host that claims to have taken more than it was given.
    HostStream greedy;
    greedy.failAt = 0;
    greedy.failWith = 5000;
    const clap_ostream_t writer = writerOf(greedy);
    EXPECT_FALSE(writeWhole(&writer, bytes));

    HostStream in;
    in.bytes = bytes;
    in.failAt = 10;
    const clap_istream_t reader = readerOf(in);
    std::string read;
    EXPECT_FALSE(readWhole(&reader, read, bytes.size()));
    EXPECT_FALSE(writeWhole(nullptr, bytes));
    EXPECT_FALSE(readWhole(nullptr, read, 10));
}

TEST(ClapStream, AStreamLongerThanTheLimitIsRefused) {
    HostStream in;
    in.bytes = sample(1001);
    in.step = 100;
    const clap_istream_t reader = readerOf(in);
    std::string read;
    EXPECT_FALSE(readWhole(&reader, read, 1000));
    HostStream exact;
    exact.bytes = sample(1000);
    exact.step = 100;
    const clap_istream_t exactReader = readerOf(exact);
    EXPECT_TRUE(readWhole(&exactReader, read, 1000));
    EXPECT_EQ(read.size(), 1000u);
}

}  // namespace
}  // namespace tw::clap
