/*
 * The choice of the almanac out of a converter list: the newest copy, the
 * satellite with the greatest Doppler among equally new ones, loyalty to
 * the held source, and what a list without satellites of a system does to
 * the held almanac of that system.
 */
#include <gtest/gtest.h>

#include <memory>

#include "predict/prgns.h"
#include "prgns_list.h"

namespace {

struct PrgnsAlm : ::testing::Test {
    std::unique_ptr<AlmList> l{new AlmList};
    std::unique_ptr<prgns_t> p{new prgns_t};
};

}  // namespace

TEST_F(PrgnsAlm, GloTakesTheNewestDateThenTheGreatestDoppler) {
    l->glo(1, 8, 300, 900.0, 1000, true, 11);   // older interval
    l->glo(2, 9, 1, 100.0, 1000, true, 12);
    l->glo(3, 9, 2, 50.0, 1000, true, 13);      // newest, weaker
    l->glo(4, 9, 2, 200.0, 1000, true, 14);     // newest, strongest
    l->glo(5, 9, 3, 5000.0, 1000, false, 15);   // newer but not valid
    const tblAlmGlo_t* a = p->getAlmanGlo(&l->lst);
    EXPECT_EQ(a->actual, 1);
    EXPECT_EQ(a->tmResived, 14u);
    EXPECT_EQ(a->length, ZEL_LEN_ALMGLO);
    EXPECT_EQ(p->getNumAlmGlo(), 4);

    // Equal Doppler: the earlier satellite of the list.
    l->reset();
    l->glo(7, 9, 2, 200.0, 1000, true, 17);
    l->glo(8, 9, 2, 200.0, 1000, true, 18);
    p->clear();
    EXPECT_EQ(p->getAlmanGlo(&l->lst)->tmResived, 17u);
    EXPECT_EQ(p->getNumAlmGlo(), 7);
}

TEST_F(PrgnsAlm, GloHeldSourceStaysWhileAsNew) {
    l->glo(3, 9, 2, 100.0, 1000, true, 13);
    l->glo(4, 9, 2, 50.0, 1000, true, 14);
    EXPECT_EQ(p->getAlmanGlo(&l->lst)->tmResived, 13u);

    // Satellite 4 is now heard better, but 3 still has the newest copy.
    l->reset();
    l->glo(4, 9, 2, 900.0, 1000, true, 24);
    l->glo(3, 9, 2, 100.0, 1000, true, 23);
    EXPECT_EQ(p->getAlmanGlo(&l->lst)->tmResived, 23u);
    EXPECT_EQ(p->getNumAlmGlo(), 3);

    // A newer almanac elsewhere moves the source.
    l->reset();
    l->glo(3, 9, 2, 100.0, 1000, true, 33);
    l->glo(4, 9, 3, 50.0, 1000, true, 34);
    EXPECT_EQ(p->getAlmanGlo(&l->lst)->tmResived, 34u);
    EXPECT_EQ(p->getNumAlmGlo(), 4);

    // clear forgets the source: the best Doppler wins again.
    l->reset();
    l->glo(3, 9, 3, 900.0, 1000, true, 43);
    l->glo(4, 9, 3, 50.0, 1000, true, 44);
    p->clear();
    EXPECT_EQ(p->getNumAlmGlo(), -1);
    EXPECT_EQ(p->getAlmanGlo(&l->lst)->tmResived, 43u);
}

TEST_F(PrgnsAlm, GpsOrderLoyaltyAndTimeParameters) {
    l->gps(1, 246, 500000, 900.0, 1000, true, 11, 17);
    l->gps(2, 247, 4096, 100.0, 1000, true, 12, 18);
    l->gps(3, 247, 8192, 50.0, 1000, true, 13, 18);
    l->gps(4, 247, 8192, 60.0, 1000, true, 14, 18);
    tblTmPrmGps_t tp;
    std::memset(&tp, 0, sizeof tp);
    const tblAlmGps_t* a = p->getAlmanGps(&l->lst, &tp);
    EXPECT_EQ(a->tmResived, 14u);
    EXPECT_EQ(a->length, ZEL_LEN_ALMGPS);
    EXPECT_EQ(p->getNumAlmGps(), 4);
    // The time parameters of the same satellite, to tp and to the held
    // table.
    EXPECT_EQ(tp.tot, 14u);
    EXPECT_EQ(tp.actual, 1);
    EXPECT_EQ(tp.length, ZEL_LEN_TMPRMGPS);
    EXPECT_EQ(p->getTmPrmGps()->tot, 14u);

    // Loyal while as new; tp is rewritten from the held source.
    l->reset();
    l->gps(3, 247, 8192, 900.0, 1000, true, 23, 18);
    l->gps(4, 247, 8192, 60.0, 1000, true, 24, 18);
    std::memset(&tp, 0, sizeof tp);
    EXPECT_EQ(p->getAlmanGps(&l->lst, &tp)->tmResived, 24u);
    EXPECT_EQ(tp.tot, 24u);

    // A zero reference time as the newest one means nothing to take.
    l->reset();
    l->gps(3, 247, 0, 900.0);
    EXPECT_EQ(p->getAlmanGps0(&l->lst)->actual, 0);
    EXPECT_EQ(p->getNumAlmGps(), -1);
}
