#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "glo_list.h"
#include "zel.h"

namespace {

/* The records are packed to 4 bytes, so their doubles may sit off an
 * 8-byte boundary; the test macros bind references, so such fields are
 * read as values (unary +). */

TEST(ZelFilter, HandlesForwardToTheirOwnFilters) {
    int* a = static_cast<int*>(filter_init());
    int* b = static_cast<int*>(filter_init());
    ASSERT_NE(a, nullptr);
    ASSERT_NE(a, b);

    // Codes come back as signed values.
    double pos[3] = {4627852.0, 119640.0, 4372994.0};
    double k[5] = {0.5, 0.5, 0.5, 0.5, 0.5};
    EXPECT_EQ(initStatic(a, pos, 100, k, 10, 100, 0), -7);
    EXPECT_EQ(initStatic(b, pos, 100, k, 10, 5, 0), 0);
    tblCrdPnt_t rec;
    std::memset(&rec, 0, sizeof rec);
    rec.length = 100;
    rec.actual = 1;
    std::memcpy(rec.xyz, pos, sizeof pos);
    EXPECT_EQ(staticFilter(a, &rec, 101), -1);
    EXPECT_EQ(staticFilter(b, &rec, 101), -8);

    GloList l;
    tblObs_t* o = l.glo(2, 5000, 2.0e7);
    KalmanFilterObs0(a, &l.lst);
    EXPECT_EQ(+o->psvd[0], 2.0e7);
    const lsttblKalmanObs_t* out =
        static_cast<const lsttblKalmanObs_t*>(KalmanFilterObs(b, &l.lst));
    EXPECT_EQ(out->num, 24u);
    EXPECT_EQ(out, KalmanFilterObs(b, &l.lst));  // the same list every time
    out = static_cast<const lsttblKalmanObs_t*>(KalmanFilterObs(a, &l.lst));
    EXPECT_EQ(out->num, 1u);  // a's satellite already had its tracker

    const tblCrdPnt_t* p = static_cast<const tblCrdPnt_t*>(KalmanFilterCrdPnt0(a, 101, &rec));
    EXPECT_NE(p, &rec);
    EXPECT_EQ(p->length, 100);
    EXPECT_EQ(std::memcmp(p->xyz, rec.xyz, sizeof rec.xyz), 0);

    filter_finit(a);
    filter_finit(b);
}

}  // namespace
