#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "glo_list.h"
#include "zel.h"

namespace {

/* The records are packed to 4 bytes, so their doubles may sit off an
 * 8-byte boundary; the test macros bind references, so such fields are
 * read as values (unary +). */

/* The assertion message of a null handle, escaped for the death-test
 * regular expression. */
std::string stops(const char* signature) {
    std::string re = "zel:[0-9]+: ";
    for (const char* c = signature; *c; c++) {
        if (std::strchr("()*[]{}.+?^$|\\", *c)) re += '\\';
        re += *c;
    }
    return re + ": Assertion `false' failed";
}

TEST(ZelFilterDeathTest, NullHandleStops) {
    double pos[3] = {0, 0, 0};
    double k[5] = {1, 1, 1, 1, 1};
    tblCrdPnt_t rec;
    std::memset(&rec, 0, sizeof rec);
    GloList l;
    EXPECT_DEATH(filter_finit(nullptr), stops("void filter_finit(int*)"));
    EXPECT_DEATH(initStatic(nullptr, pos, 1, k, 1, 1, 0),
                 stops("char initStatic(int*, double*, unsigned int, double*, unsigned int, "
                       "unsigned int, unsigned char)"));
    EXPECT_DEATH(staticFilter(nullptr, &rec, 1),
                 stops("char staticFilter(int*, tblCrdPnt_t*, unsigned int)"));
    EXPECT_DEATH(KalmanFilterObs0(nullptr, &l.lst),
                 stops("void KalmanFilterObs0(int*, lsttblSat_t*)"));
    EXPECT_DEATH(KalmanFilterObs(nullptr, &l.lst),
                 stops("void* KalmanFilterObs(int*, lsttblSat_t*)"));
    EXPECT_DEATH(KalmanFilterCrdPnt0(nullptr, 1, &rec),
                 stops("void* KalmanFilterCrdPnt0(int*, unsigned int, tblCrdPnt_t*)"));
}

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
