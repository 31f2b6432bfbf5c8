// The 128-bit integer of both compilers.
#ifndef QZHOST_SRC_WIDE_INTEGER_H
#define QZHOST_SRC_WIDE_INTEGER_H

namespace qzhost {

using Uint128 = unsigned __int128;

}  // namespace qzhost

#endif
