/*
 * GPS almanac collector: the almanac pages of the 32 PRNs and the two
 * health pages, collected within one 12.5-minute cycle of subframes 4 and
 * 5 and turned into tblAlmGps_t.
 *
 * Pages are filed by the page counter, which the TOW of the latest
 * subframe 1 gives, not by the SV ID a page carries: a page that arrives
 * while the counter says 25 is taken as the health page whatever it says
 * about itself. The SV ID is looked at afterwards, when the set is judged:
 * an almanac page must name its own PRN, or 0 for a PRN the constellation
 * does not have.
 */
#include "decode/navinf_gps.h"

#include "decode/navinf_gps_read.h"

/* Page counter value before the first subframe 1. */
static const unsigned int kPageUnknown = 0xFFFFFFFFu;

/* Where a page goes: the PRN (1..32) whose almanac it carries, 0 for the
 * health page of its subframe, -1 when the collector does not keep it.
 * Subframe 5 pages 1-24 carry PRN 1-24; subframe 4 carries PRN 25-28 on
 * pages 2-5 and PRN 29-32 on pages 7-10; page 25 of both is health. */
static int destination(unsigned int sfId, unsigned int page) {
    if (page == 25) return 0;
    if (sfId == 5) return page >= 1 && page <= 24 ? (int)page : -1;
    if (page >= 2 && page <= 5) return 23 + (int)page;
    if (page >= 7 && page <= 10) return 22 + (int)page;
    return -1;
}

AlmGps_t::AlmGps_t() : page(kPageUnknown) {}

void AlmGps_t::upx0c(unsigned char* blk, unsigned int tm) {
    NavInfStr_t s;
    if (!s.createFromx0c(NAVSTR_GPS, blk, tm)) return;
    unsigned int id = s.getNum();
    if (id == 1) {
        /* Start of this subframe 1 in seconds of week; its frame number
         * within the 25-frame cycle is the page of subframes 4 and 5. */
        unsigned int tow = gpsTowCount(s.getData());
        unsigned int t = (tow * 3 - 3) * 2;
        unsigned int p = (t % 750) / 30 + 1;
        if (p == 1) clear();
        page = p;
        sf1 = s;
        return;
    }
    if ((id != 4 && id != 5) || page == kPageUnknown) return;
    int dst = destination(id, page);
    if (dst > 0)
        alm[dst - 1] = s;
    else if (dst == 0)
        (id == 4 ? health25 : health1) = s;
}

bool AlmGps_t::isCmplt() const {
    if (page == kPageUnknown) return false;
    if (!health25.isCmplt() || !health1.isCmplt() || !sf1.isCmplt())
        return false;
    unsigned int t1 = sf1.getTmResived();
    /* unsigned: a health page received before the subframe 1 wraps round
     * to a huge difference and fails */
    if (health25.getTmResived() - t1 > 750u) return false;
    if (health1.getTmResived() - t1 > 750u) return false;
    for (int k = 0; k < ZEL_NUM_ALM_GPS; k++) {
        if (!alm[k].isCmplt()) return false;
        unsigned int id = alm[k].getSvid();
        if (id != GPS_SVID_DUMMY && id != (unsigned int)(k + 1)) return false;
        int d = (int)(alm[k].getTmResived() - t1);
        if (d > 750 || d < -750) return false;
    }
    return true;
}

/* Full almanac week from its 8 broadcast bits `w` and the 10-bit week WN
 * of subframe 1. The almanac week lies within 128 weeks of WN, so the high
 * bits of WN are taken and moved by one when the low bits say the
 * almanac is from across a 256-week boundary. That move is by 1, not by
 * 256, on purpose and kept as the receiver has always done it: across a
 * boundary the high part loses or gains one in its lowest bit, and with
 * OR-ing the 8 low bits the result can have all its low bits set. */
static unsigned int extendWna(unsigned int wn, unsigned int w) {
    int d = (int)w - (int)(wn % 256);
    unsigned int high = wn & 0x300;
    if (d > 128)
        high -= 1;
    else if (d < -128)
        high += 1;
    return high | w;
}

int AlmGps_t::getTbl(tblAlmGps_t* tbl) {
    if (!isCmplt()) return 1;
    const unsigned char* h5 = health1.getData();
    const unsigned char* h4 = health25.getData();
    tbl->actual = 1;
    tbl->tmResived = health1.getTmResived();
    tbl->toa = gpsUnsigned(h5, kGpsHealth.toa);
    tbl->wna = extendWna(gpsUnsigned(sf1.getData(), kGpsSf1.wn),
                         gpsUnsigned(h5, kGpsHealth.wna));

    for (int k = 0; k < ZEL_NUM_ALM_GPS; k++) {
        tblAlmGpsSat_t& a = tbl->alm[k];
        const unsigned char* hp = k < 24 ? h5 : h4;
        unsigned int health = gpsUnsigned(hp, kGpsHealth.health[k]);
        if (health == GPS_HEALTH_ABSENT ||
            alm[k].getSvid() == GPS_SVID_DUMMY) {
            a.onEmpty = 1;
            continue;
        }
        const unsigned char* p = alm[k].getData();
        a.onEmpty = 0;
        a.healL = (uint8_t)gpsUnsigned(p, kGpsAlm.health);
        a.toa = gpsUnsigned(p, kGpsAlm.toa);
        a.af0 = gpsValue(p, kGpsAlm.af0);
        a.af1 = gpsValue(p, kGpsAlm.af1);
        a.m0 = gpsValue(p, kGpsAlm.m0);
        a.omega = gpsValue(p, kGpsAlm.omega);
        a.omega0 = gpsValue(p, kGpsAlm.omega0);
        a.sqrtA = gpsValue(p, kGpsAlm.sqrtA);
        a.omegaDot = gpsValue(p, kGpsAlm.omegaDot);
        a.deltaI = gpsValue(p, kGpsAlm.deltaI);
        a.e = gpsValue(p, kGpsAlm.e);
        if (a.toa != tbl->toa) {
            /* pages from two almanac uploads: the set is not one almanac */
            tbl->actual = 0;
            return 0;
        }
    }
    return 1;
}

void AlmGps_t::clear() {
    sf1.clear();
    health25.clear();
    health1.clear();
    for (NavInfStr_t& s : alm) s.clear();
    /* the counter goes back to unknown too, so that a cleared collector is
     * the same as a new one */
    page = kPageUnknown;
}
