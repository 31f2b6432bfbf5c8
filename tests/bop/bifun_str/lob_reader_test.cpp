// What the readers of LOBs ask of the host's read services: these stand in front of the host's own, note what they are asked
// and hand it on.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "bop/bifun_str/lob_read.h"
#include "qzbifun/string.h"
#include "qzhost/lob.h"
#include "qzhost/string_value.h"
#include "tests/support/host.h"

namespace {

using Service = decltype(nblob_get_data);

struct Asked {
    std::string service;
    int32_t reader = 0;
    uint32_t capacity = 0;
    uint64_t offset = 0;
    uint32_t count = 0;
    bool operator==(const Asked&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Asked& asked) {
    return out << asked.service << ' ' << asked.reader << ' ' << asked.capacity << ' ' << asked.offset << ' ' << asked.count;
}

std::optional<Asked> g_asked;

Service* of_the_host(const char* name) { return reinterpret_cast<Service*>(dlsym(RTLD_NEXT, name)); }

}  // namespace

extern "C" {

int32_t nblob_get_data(qz_env* env, int32_t reader, const nstr* locator, void* destination, uint32_t capacity, uint64_t offset,
                       uint32_t count, uint32_t* out_read, const nblob_encryption* encryption) {
    static Service* const host = of_the_host("nblob_get_data");
    g_asked = {"bytes", reader, capacity, offset, count};
    return host(env, reader, locator, destination, capacity, offset, count, out_read, encryption);
}

int32_t ntext_get_data(qz_env* env, int32_t reader, const nstr* locator, void* destination, uint32_t capacity, uint64_t offset,
                       uint32_t count, uint32_t* out_read, const nblob_encryption* encryption) {
    static Service* const host = of_the_host("ntext_get_data");
    g_asked = {"text", reader, capacity, offset, count};
    return host(env, reader, locator, destination, capacity, offset, count, out_read, encryption);
}

}  // extern "C"

namespace {

class LobReader : public testing::Test {
  protected:
    // Five bytes in the store.
    LobReader() : locator_(LOB_DATA_AT, '#') {
        uint32_t len = LOB_DATA_AT;
        EXPECT_EQ(host_lob_make(host_.env(), LOB_KIND_SHORT, 1, "value", 5, reinterpret_cast<uint8_t*>(locator_.data()), &len),
                  0);
        locator_.resize(len);
        g_asked.reset();
    }

    void expect(int32_t code, const Asked& asked) {
        EXPECT_EQ(code, 0);
        EXPECT_EQ(std::string(data_, len_), "value");
        EXPECT_EQ(g_asked, asked);
        host_.mem()->free(host_.env(), host_.mem()->pool, data_);
        g_asked.reset();
    }

    support::Host host_;
    std::string locator_;
    char* data_ = nullptr;
    uint32_t len_ = 0;
};

TEST_F(LobReader, OfAStringValueIsTheCallers) {
    nstr value;
    nstr_assign_fast(&value, static_cast<uint32_t>(locator_.size()), locator_.data());
    for (const int32_t reader : {-1, 0, 7}) {
        expect(ifun_lob_to_str_ex(host_.env(), reader, host_.mem(), &value, 1, &data_, &len_), {"text", reader, 5, 0, 5});
        expect(ifun_lob_to_str_ex(host_.env(), reader, host_.mem(), &value, 0, &data_, &len_), {"bytes", reader, 5, 0, 5});
    }
}

TEST_F(LobReader, OfASlotIsAny) {
    const bdta3_colstr slot{static_cast<uint32_t>(locator_.size()), 0, locator_.data()};
    expect(bifun::bifun_lob_to_str(host_.env(), host_.mem(), &slot, 1, &data_, &len_), {"text", -1, 5, 0, 5});
    expect(bifun::bifun_lob_to_str(host_.env(), host_.mem(), &slot, 0, &data_, &len_), {"bytes", -1, 5, 0, 5});
    expect(bjson_get_data_inner(host_.env(), host_.mem(), &slot, 1, &data_, &len_), {"text", -1, 5, 0, 5});
}

}  // namespace
