/*
 * Exported converter functions: handles, pass-through of results, the
 * epoch time of a list, and the assertion on a null handle.
 */
#include <gtest/gtest.h>

#include "decode/intake_fixture.h"
#include "zel.h"

using namespace intake;

namespace {

lsttblSat_t* feedC(int* h, std::vector<uint8_t>& msg) {
    return static_cast<lsttblSat_t*>(cnvx0c_upx0c(h, msg.data()));
}

}  // namespace

TEST(ConverterApi, HandlesAreIndependentAndResultsBelongToThem) {
    int* a = static_cast<int*>(cnvx0c_init());
    int* b = static_cast<int*>(cnvx0c_init());
    ASSERT_NE(a, nullptr);
    ASSERT_NE(a, b);

    x0c::Header h = header(kT0 + 3);
    h.dtGpsUtc = 18;
    std::vector<uint8_t> m1 = x0c::buildMessage(h, {sat(false, 1, 1), sat(true, 2, 2)});
    std::vector<uint8_t> m2 = x0c::buildMessage(header(kT0 + 4), {});
    lsttblSat_t* la = feedC(a, m1);
    lsttblSat_t* lb = feedC(b, m2);
    ASSERT_NE(la, lb);
    EXPECT_EQ(la->numGlo, 1u);
    EXPECT_EQ(la->numGps, 1u);
    EXPECT_EQ(lb->numGlo + lb->numGps, 0u);
    const tblGpsUtc_t* ua = static_cast<tblGpsUtc_t*>(cnvx0c_getTblGpsUtc(a));
    EXPECT_EQ(ua->actual, 1);
    EXPECT_EQ(ua->dtGpsUtc, 18u);
    EXPECT_EQ(static_cast<tblGpsUtc_t*>(cnvx0c_getTblGpsUtc(b))->actual, 0);

    /* A message of another type returns the same list, untouched. */
    std::vector<uint8_t> other = m1;
    other[0] = 0x0B;
    EXPECT_EQ(feedC(a, other), la);
    EXPECT_EQ(la->numGlo, 1u);

    cnvx0c_clear(a);
    EXPECT_EQ(la->numGlo + la->numGps, 0u);
    EXPECT_EQ(ua->actual, 0);
    cnvx0c_finit(a);
    cnvx0c_finit(b);
}

TEST(ConverterApi, EpochTimeOfAListPrefersGlonass) {
    int* h = static_cast<int*>(cnvx0c_init());
    std::vector<uint8_t> empty = x0c::buildMessage(header(kT0 + 2), {});
    EXPECT_EQ(getTmZel(feedC(h, empty)), 0u);

    std::vector<uint8_t> gps = x0c::buildMessage(header(kT0 + 3), {sat(true, 2, 2)});
    EXPECT_EQ(getTmZel(feedC(h, gps)), kT0 + 3);

    std::vector<uint8_t> both =
        x0c::buildMessage(header(kT0 + 4), {sat(true, 2, 2), sat(false, 1, 1)});
    lsttblSat_t* l = feedC(h, both);
    l->tblGps[0].tblObs->tmZel = 1; /* tell the two apart */
    EXPECT_EQ(getTmZel(l), kT0 + 4);
    cnvx0c_finit(h);
}
