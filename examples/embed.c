/*
 * The library in a program of its own, without a server: a vector with a NULL row, a call through a selection, a call that
 * fails. Build it against an installed tree:
 *
 *   cc -std=c11 embed.c $(pkg-config --cflags --libs qzbifun qzhost) -o embed
 */
#include <inttypes.h>
#include <stdio.h>

#include "qzbifun/qzbifun.h"
#include "qzhost/control.h"

static void print_rows(const char* title, const bdta3_col* col, uint32_t nrows) {
    const int64_t* values = col->data->values;
    printf("%-9s all_valid %" PRIu32 ":", title, col->all_valid);
    for (uint32_t i = 0; i < nrows; ++i) {
        if (col->data->valid[i]) {
            printf(" %" PRId64, values[i]);
        } else {
            printf(" NULL");
        }
    }
    printf("\n");
}

int main(void) {
    /* Once in the process, before any other call: default compatibility, UTF-8, search that heeds case. */
    bifun_dll_var_init(0, 1, 1);

    /* One environment and one memory object for each thread. */
    qz_env* env = host_env_create();
    rt_memobj* memory = env ? host_memobj_create(env) : NULL;
    bdta3_col* balance = memory ? host_col_create(env, memory, HOST_INT64, 4) : NULL;
    bdta3_col* result = memory ? host_col_create(env, memory, HOST_INT64, 4) : NULL;
    if (!balance || !result) {
        fprintf(stderr, "out of memory\n");
        return 1;
    }

    /* A new vector is all NULL. A row gets its value first, then its valid byte. */
    int64_t* values = balance->data->values;
    values[0] = -250, balance->data->valid[0] = 1;
    values[1] = 17, balance->data->valid[1] = 1;
    values[3] = -9, balance->data->valid[3] = 1;
    balance->all_valid = 0; /* row 2 is NULL */

    int32_t code = babs_a_math_int(env, memory, balance, result, 4);
    if (code < 0) return 1;
    print_rows("all rows", result, 4);

    /* A selection names the rows to compute, in any order. The result is dense: row i is the i-th selected row. */
    const uint16_t selection[] = {3, 0};
    if (host_col_set_selection(balance, selection, 2) < 0) return 1;
    code = babs_a_math_int(env, memory, balance, result, 2);
    if (code < 0) return 1;
    print_rows("selected", result, 2);

    /* The lowest bigint has no magnitude. The call ends at that row, and the error stack tells who found what. */
    host_col_set_selection(balance, NULL, 0);
    values[1] = INT64_MIN;
    code = babs_a_math_int(env, memory, balance, result, 4);
    printf("%s: %s\n", host_error_name(code), host_error_text(code));
    for (uint32_t i = 0; i < host_error_count(env); ++i) {
        const char* function = NULL;
        const int32_t entry = host_error_at(env, i, &function);
        printf("  %" PRId32 " %s\n", entry, function);
    }
    host_error_clear(env);

    host_col_destroy(result);
    host_col_destroy(balance);
    host_memobj_destroy(memory);
    host_env_destroy(env);
    return code == EC_DATA_OVERFLOW ? 0 : 1;
}
