#include "qzhost/control.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "qzbifun/codes.h"
#include "qzhost/column.h"
#include "qzhost/error.h"
#include "qzhost/memory.h"
#include "qzhost/parameters.h"

namespace {

class ControlTest : public testing::Test {
  protected:
    void SetUp() override {
        env = host_env_create();
        rt_mem = host_memobj_create(env);
    }
    void TearDown() override {
        host_memory_fail_after(-1);
        host_memobj_destroy(rt_mem);
        host_env_destroy(env);
    }

    qz_env* env = nullptr;
    rt_memobj* rt_mem = nullptr;
};

constexpr uint32_t kWidths[] = {4, 8, 8, 4, 30, 13, 12, 24, 16, 16, 16, 16};  // of the types from HOST_INT on

// ---- Environments and sessions ---------------------------------------------------------------------------------------------

TEST_F(ControlTest, AnEnvironmentStartsWithoutASession) {
    EXPECT_EQ(env->session, nullptr);
    qz_session* session = host_env_open_session(env);
    ASSERT_NE(session, nullptr);
    EXPECT_EQ(env->session, session);
    EXPECT_EQ(session->session_tz, 0);
    EXPECT_EQ(session->session_lang, 1u);
    EXPECT_EQ(session->session_date_lang, 1u);
    host_session_set_time_zone(session, -570);
    host_session_set_language(session, 2, 3);
    EXPECT_EQ(session->session_tz, -570);
    EXPECT_EQ(session->session_lang, 2u);
    EXPECT_EQ(session->session_date_lang, 3u);
    session = host_env_open_session(env);  // in place of the first
    EXPECT_EQ(env->session, session);
    EXPECT_EQ(session->session_tz, 0);
    host_env_close_session(env);
    EXPECT_EQ(env->session, nullptr);
    host_env_close_session(env);
    ASSERT_NE(host_env_open_session(env), nullptr);  // and goes with the environment
}

TEST_F(ControlTest, EnvironmentsAndSessionsMayRunOut) {
    host_memory_fail_after(0);
    EXPECT_EQ(host_env_create(), nullptr);
    EXPECT_EQ(host_env_open_session(env), nullptr);
    EXPECT_EQ(env->session, nullptr);
    host_memory_fail_after(1);
    qz_session* session = host_env_open_session(env);
    ASSERT_NE(session, nullptr);
    session->session_tz = 60;
    EXPECT_EQ(host_env_open_session(env), nullptr);
    EXPECT_EQ(env->session, session);
    EXPECT_EQ(session->session_tz, 60);
    host_env_destroy(nullptr);
}

// ---- Vectors ---------------------------------------------------------------------------------------------------------------

TEST_F(ControlTest, NewVectorsAreNullAndZero) {
    for (int32_t type = HOST_INT; type <= HOST_BLOB; ++type) {
        const uint32_t width = kWidths[type - HOST_INT];
        EXPECT_EQ(host_type_width(type), width);
        for (const uint32_t rows : {1u, 63u, 1000u, 65536u}) {
            bdta3_col* col = host_col_create(env, rt_mem, type, rows);
            ASSERT_NE(col, nullptr);
            EXPECT_EQ(host_col_type(col), type);
            EXPECT_EQ(host_col_rows(col), rows);
            EXPECT_EQ(col->all_valid, 0u);
            EXPECT_EQ(col->sel, nullptr);
            EXPECT_EQ(reinterpret_cast<uintptr_t>(col->data->valid) % 64, 0u);
            EXPECT_EQ(reinterpret_cast<uintptr_t>(col->data->values) % 64, 0u);
            const char* values = static_cast<const char*>(col->data->values);
            EXPECT_EQ(std::string(reinterpret_cast<const char*>(col->data->valid), rows), std::string(rows, '\0'));
            EXPECT_EQ(std::string(values, rows * width), std::string(rows * width, '\0'));
            host_col_destroy(col);
        }
    }
    host_col_destroy(nullptr);
}

TEST_F(ControlTest, VectorsOfBadArgumentsAreNotMade) {
    for (const int32_t type : {0, 13, -1, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(host_type_width(type), 0u);
        EXPECT_EQ(host_col_create(env, rt_mem, type, 10), nullptr);
    }
    for (const uint32_t rows : {0u, 65537u, UINT32_MAX}) EXPECT_EQ(host_col_create(env, rt_mem, HOST_INT, rows), nullptr);
}

TEST_F(ControlTest, EachAllocationOfAVectorMayFail) {
    bdta3_col* col = nullptr;
    int64_t allocations = 0;
    for (; col == nullptr; ++allocations) {
        ASSERT_LT(allocations, 10);
        host_memory_fail_after(allocations);
        col = host_col_create(env, rt_mem, HOST_DEC, 100);
    }
    EXPECT_GT(allocations, 1);
    host_memory_fail_after(0);
    const uint16_t sel[] = {1, 2};
    EXPECT_EQ(host_col_set_selection(col, sel, 2), EC_OUT_OF_MEMORY);
    EXPECT_EQ(col->sel, nullptr);
    host_col_destroy(col);
}

TEST_F(ControlTest, SelectionsAreCopied) {
    bdta3_col* col = host_col_create(env, rt_mem, HOST_INT, 4);
    uint16_t sel[] = {3, 0, 3, 1, 2};
    ASSERT_EQ(host_col_set_selection(col, sel, 5), 0);
    sel[0] = 0;
    ASSERT_NE(col->sel, nullptr);
    EXPECT_EQ(col->sel[0], 3);
    EXPECT_EQ(col->sel[4], 2);

    const uint16_t beyond[] = {0, 4};
    EXPECT_EQ(host_col_set_selection(col, beyond, 2), EC_INVALID_ARGUMENT);
    EXPECT_EQ(col->sel[0], 3);
    ASSERT_EQ(host_col_set_selection(col, col->sel + 1, 3), 0);  // a piece of itself
    EXPECT_EQ(col->sel[0], 0);
    EXPECT_EQ(col->sel[1], 3);
    EXPECT_EQ(col->sel[2], 1);

    host_memory_fail_after(0);  // the room is there
    ASSERT_EQ(host_col_set_selection(col, nullptr, 0), 0);
    EXPECT_EQ(col->sel, nullptr);
    ASSERT_EQ(host_col_set_selection(col, sel, 5), 0);
    EXPECT_NE(col->sel, nullptr);
    const std::vector<uint16_t> longer(1000, 2);
    EXPECT_EQ(host_col_set_selection(col, longer.data(), 1000), EC_OUT_OF_MEMORY);
    EXPECT_EQ(col->sel[4], 2);
    host_memory_fail_after(-1);
    ASSERT_EQ(host_col_set_selection(col, longer.data(), 1000), 0);
    EXPECT_EQ(col->sel[999], 2);
    ASSERT_EQ(host_col_set_selection(col, longer.data(), 0), 0);  // selects no row
    EXPECT_NE(col->sel, nullptr);
    host_col_destroy(col);

    bdta3_col* other = host_col_create(env, rt_mem, HOST_INT, 65536);
    const uint16_t last = 65535;
    ASSERT_EQ(host_col_set_selection(other, &last, 0), 0);
    EXPECT_NE(other->sel, nullptr);
    ASSERT_EQ(host_col_set_selection(other, &last, 1), 0);
    EXPECT_EQ(other->sel[0], 65535);
    host_col_destroy(other);
}

TEST_F(ControlTest, SetTextChecksItsArguments) {
    bdta3_col* numbers = host_col_create(env, rt_mem, HOST_INT, 2);
    bdta3_col* texts = host_col_create(env, rt_mem, HOST_STR, 2);
    EXPECT_EQ(host_col_set_text(numbers, 0, "a", 1, 0), EC_INVALID_ARGUMENT);
    EXPECT_EQ(host_col_set_text(texts, 2, "a", 1, 0), EC_INVALID_ARGUMENT);
    EXPECT_EQ(host_col_set_text(texts, UINT32_MAX, "a", 1, 0), EC_INVALID_ARGUMENT);
    host_memory_fail_after(0);
    EXPECT_EQ(host_col_set_text(texts, 0, "a", 1, 0), EC_OUT_OF_MEMORY);
    host_memory_fail_after(-1);
    EXPECT_EQ(texts->data->valid[0] + texts->data->valid[1] + numbers->data->valid[0], 0);
    EXPECT_EQ(host_col_set_text(texts, 1, "a", 1, 4), 0);
    EXPECT_EQ(texts->data->valid[1], 1);
    host_col_destroy(texts);
    host_col_destroy(numbers);
}

TEST_F(ControlTest, ResetGivesANewVectorThatKeepsItsMemory) {
    bdta3_col* col = host_col_create(env, rt_mem, HOST_STR, 100);
    const uint16_t sel = 5;
    const std::string bytes(300, 't');
    const auto fill = [&] {
        for (uint32_t row = 0; row < 100; ++row) {
            if (host_col_set_text(col, row, bytes.data(), 300, 0) != 0) return false;
        }
        return true;
    };
    for (int batch = 0; batch < 4; ++batch) {
        ASSERT_TRUE(fill());
        host_col_set_selection(col, &sel, 1);
        col->all_valid = 1;
        host_col_reset(col);
        EXPECT_EQ(col->all_valid, 0u);
        EXPECT_EQ(col->sel, nullptr);
        const char* values = static_cast<const char*>(col->data->values);
        EXPECT_EQ(std::string(values, 1600), std::string(1600, '\0'));
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(col->data->valid), 100), std::string(100, '\0'));
    }
    host_memory_fail_after(0);
    EXPECT_TRUE(fill());
    host_col_destroy(col);
}

// ---- Threads ---------------------------------------------------------------------------------------------------------------

constexpr int kThreads = 4;
constexpr int kRounds = 50;

template <class Body>
void on_threads(Body body) {
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) threads.emplace_back(body, i);
    for (std::thread& thread : threads) thread.join();
}

TEST(ThreadTest, EnvironmentsOnDifferentThreads) {
    std::atomic<int> failures = 0;
    on_threads([&failures](int thread) {
        for (int round = 0; round < kRounds; ++round) {
            qz_env* env = host_env_create();
            rt_memobj* rt_mem = host_memobj_create(env);
            host_session_set_time_zone(host_env_open_session(env), static_cast<int16_t>(thread));
            bdta3_col* col = host_col_create(env, rt_mem, HOST_STR, 200);
            bdta3_col* copy = host_col_create(env, rt_mem, HOST_STR, 200);
            for (uint32_t row = 0; row < 200; ++row) {
                const std::string bytes(row * 30, static_cast<char>('a' + thread));
                bdta3_col_assign_str(env, rt_mem, col, row, bytes.data(), row * 30, 0);
            }
            bdta3_col_copy(env, rt_mem, copy, col, 200);
            const bdta3_colstr& last = static_cast<bdta3_colstr*>(copy->data->values)[199];
            if (last.len != 199 * 30 || last.bytes[0] != 'a' + thread) ++failures;
            qzerr_stk_push(env, -1 - thread, "thread");
            if (host_error_count(env) != 1 || host_error_at(env, 0, nullptr) != -1 - thread) ++failures;
            if (env->session->session_tz != thread) ++failures;
            host_col_destroy(copy);
            host_col_destroy(col);
            host_memobj_destroy(rt_mem);
            host_env_destroy(env);
        }
    });
    EXPECT_EQ(failures, 0);
}

TEST(ThreadTest, FailingAllocationsAreThisThreadsOwn) {
    std::atomic<int> failures = 0;
    on_threads([&failures](int thread) {
        for (int round = 0; round < kRounds; ++round) {
            host_memory_fail_after(thread % 2 == 0 ? 0 : -1);
            void* block = mem_malloc_ex(nullptr, 10, __FILE__, __LINE__);
            if ((block == nullptr) != (thread % 2 == 0)) ++failures;
            mem_free(nullptr, block);
        }
        host_memory_fail_after(-1);
    });
    EXPECT_EQ(failures, 0);
}

TEST(ThreadTest, ParametersAreReadWhileTheyChange) {
    std::atomic<int> failures = 0;
    on_threads([&failures](int thread) {
        for (uint32_t round = 0; round < 1000; ++round) {
            if (thread == 0) host_parameter_set(JSON_MODE, round % 2 * 2);
            if (thread == 1) host_set_oracle_date_format(static_cast<int32_t>(round % 2));
            const uint32_t mode = ini_get_value(0, JSON_MODE);
            const int32_t option = ini_enable_oracle_date_fmt();
            if ((mode != 0 && mode != 2) || (option != 0 && option != 1)) ++failures;
        }
    });
    EXPECT_EQ(failures, 0);
    host_parameters_reset();
}

struct Listener {
    std::atomic<bool> listening = false;
    std::atomic<int> lines = 0;
    std::atomic<int> strays = 0;
};

TEST(ThreadTest, ASinkThatWasTakenAwayIsNotCalled) {
    Listener listener;
    const auto sink = [](void* context, int32_t, const char*, int32_t) {
        Listener* self = static_cast<Listener*>(context);
        ++self->lines;
        if (!self->listening) ++self->strays;
    };
    std::atomic<bool> done = false;
    std::thread control([&] {
        for (int round = 0; round < 200; ++round) {
            listener.listening = true;
            host_log_set_sink(sink, &listener);
            const int before = listener.lines;
            while (listener.lines == before) std::this_thread::yield();
            host_log_set_sink(nullptr, nullptr);
            listener.listening = false;
        }
        done = true;
    });
    on_threads([&done](int thread) {
        while (!done) {
            elog_try_report_qzerr(-1, "thread.cpp", thread);
            std::this_thread::yield();
        }
    });
    control.join();
    EXPECT_GE(listener.lines, 200);
    EXPECT_EQ(listener.strays, 0);
}

}  // namespace
