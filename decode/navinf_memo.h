/*
 * Memory of the last table a navigation collector built.
 *
 * The receiver reports every satellite in every message, and the
 * collectors rebuild their tables from the stored strings each time,
 * although the strings of an ephemeris change only every half hour or so.
 * Decoding a table is a pure function of its strings, so when the strings
 * are the ones the last build used and the table still holds, byte for
 * byte, what that build wrote, building again would write the same bytes:
 * the collector may skip it. Comparing the whole table, not only the
 * strings, keeps that true even when someone else has written into it.
 */
#ifndef ZELNAV_NAVINF_MEMO_H
#define ZELNAV_NAVINF_MEMO_H

#include <cstring>

template <typename Table>
class NavMemo {
public:
    /* True when `tbl` is where the last build went and still holds what
     * it wrote. */
    bool holds(const Table* tbl) const {
        return at == tbl && std::memcmp(tbl, &last, sizeof(Table)) == 0;
    }
    /* Remembers a build that has just been written into `tbl`. */
    void keep(const Table* tbl) {
        std::memcpy(&last, tbl, sizeof(Table));
        at = tbl;
    }

private:
    Table last = {};
    const Table* at = nullptr;
};

#endif
