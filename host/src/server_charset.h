// The parameter SERVER_CHARSET once more, in a place that the character services read with one load and no call.
#pragma once

#include <atomic>
#include <cstdint>

namespace qzhost {

[[gnu::visibility("hidden")]] extern constinit std::atomic<uint32_t> server_charset;

}  // namespace qzhost
