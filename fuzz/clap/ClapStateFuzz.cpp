// State streams as a CLAP host hands them over: the first byte sets how many bytes each
// read call gives (0: as many as asked), the rest is the stream. The plug-in must answer,
// never crash, and a stream it refuses must leave its state as it was.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <clap/ext/state.h>

#include "product/TidewakeClap.h"

namespace {

struct Stream {
    const unsigned char* data;
    std::size_t size, position, step;
};

struct Sink {
    std::string bytes;
};

const clap_plugin_t* plugin() {
    static const clap_plugin_t* instance = [] {
        ::setenv("XDG_CONFIG_HOME", "/nonexistent/tidewake-fuzz", 1);
        static clap_host_t host{};
        host.clap_version = CLAP_VERSION;
        host.name = "fuzz";
        host.vendor = host.url = host.version = "";
        host.get_extension = [](const clap_host_t*, const char*) -> const void* { return nullptr; };
        host.request_restart = host.request_process = host.request_callback = [](const clap_host_t*) {};
        const tw::clap::Product& product = tw::tidewakeClap();
        tw::clap::entryInit(product, "/nonexistent/Tidewake.clap");
        const auto* factory =
            static_cast<const clap_plugin_factory_t*>(tw::clap::entryFactory(product, CLAP_PLUGIN_FACTORY_ID));
        const clap_plugin_t* p = factory->create_plugin(factory, &host, product.descriptor.id);
        if (p == nullptr || !p->init(p)) __builtin_trap();
        return p;
    }();
    return instance;
}

std::string save(const clap_plugin_state_t* state) {
    Sink sink;
    clap_ostream_t out{&sink, [](const clap_ostream_t* s, const void* buffer, std::uint64_t size) -> std::int64_t {
                           static_cast<Sink*>(s->ctx)->bytes.append(static_cast<const char*>(buffer), size);
                           return static_cast<std::int64_t>(size);
                       }};
    if (!state->save(plugin(), &out) || sink.bytes.empty()) __builtin_trap();
    return sink.bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    if (size == 0) return 0;
    const clap_plugin_t* p = plugin();
    const auto* state = static_cast<const clap_plugin_state_t*>(p->get_extension(p, CLAP_EXT_STATE));
    const std::string before = save(state);
    Stream stream{data + 1, size - 1, 0, data[0] % 8u};
    clap_istream_t in{&stream, [](const clap_istream_t* s, void* buffer, std::uint64_t want) -> std::int64_t {
                          auto& st = *static_cast<Stream*>(s->ctx);
                          std::size_t n = std::min<std::uint64_t>(want, st.size - st.position);
                          if (st.step) n = std::min(n, st.step);
                          std::memcpy(buffer, st.data + st.position, n);
                          st.position += n;
                          return static_cast<std::int64_t>(n);
                      }};
    if (!state->load(p, &in) && save(state) != before) __builtin_trap();
    return 0;
}
