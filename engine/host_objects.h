/*
 * Owners of the host's objects: an environment with its session and memory, and vectors.
 *
 * Exhaustion of memory while one is made is std::bad_alloc. An environment, and all that was made in it, belongs to one thread
 * at a time.
 */
#ifndef QZENGINE_HOST_OBJECTS_H
#define QZENGINE_HOST_OBJECTS_H

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "engine/errors.h"
#include "engine/value_type.h"
#include "qzhost/control.h"

namespace qzengine {

// What a session has that is not its default.
struct SessionSettings {
    std::optional<int16_t> time_zone;  // minutes east of UTC
};

class Environment {
  public:
    explicit Environment(const SessionSettings& settings = {});
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;
    ~Environment();

    qz_env* env() const { return env_; }
    rt_memobj* memory() const { return memory_; }              // lives as long as the environment
    rt_memobj* batch_memory() const { return batch_memory_; }  // what calls of a batch take

    // Gives back all that was taken from the batch's memory, and the LOBs out of row. std::bad_alloc when there is no new
    // memory object to be had.
    void begin_batch();

    // The error stack, oldest first; it is empty then.
    std::vector<Failure::StackEntry> take_errors();

  private:
    void release();

    qz_env* env_ = nullptr;
    rt_memobj* memory_ = nullptr;
    rt_memobj* batch_memory_ = nullptr;
};

struct VectorDeleter {
    void operator()(bdta3_col* vector) const { host_col_destroy(vector); }
};
using Vector = std::unique_ptr<bdta3_col, VectorDeleter>;

// All rows NULL.
Vector make_vector(const Environment& environment, ValueType type, uint32_t rows);

// Physical row of logical row i.
inline uint32_t physical_row(const bdta3_col* vector, uint32_t i) { return vector->sel != nullptr ? vector->sel[i] : i; }

template <class T>
T* values_of(const bdta3_col* vector) {
    return static_cast<T*>(vector->data->values);
}

}  // namespace qzengine

#endif
