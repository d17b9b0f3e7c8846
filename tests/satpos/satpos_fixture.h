/*
 * Records for the satellite-computation tests: one GPS and one GLONASS
 * satellite with the broadcast ephemerides of 2009-04-01 (G02 of 00:00,
 * R02 of 00:15 UTC), observation tables, and a converter list over them.
 */
#ifndef ZELNAV_TESTS_SATPOS_FIXTURE_H
#define ZELNAV_TESTS_SATPOS_FIXTURE_H

#include <cmath>
#include <cstring>

#include "satpos/crdsat.h"

namespace satpos_test {

const double kC = 299792458.0;
const int kLeap = 15;  /* GPS-UTC seconds on that day */

/* tmZel of a GPS second of week 1525 (with dUtc = kLeap). */
inline unsigned int tmOfGps(unsigned int sow) {
    return 1525u * 604800u + sow - (unsigned int)kLeap - 630709200u;
}

/* tmZel of a Moscow time of day of 2009-04-01 (day 3378 from 2000). */
inline unsigned int tmOfGlo(unsigned int tod) { return 3378u * 86400u + tod; }

struct GpsSat {
    tblHdr_t hdr;
    tblObs_t obs;
    tblAddInf_t add;
    tblOprGps_t opr;
    tblTmPrmGps_t tmp;
    tblAlmGps_t alm;
    tblIonGps_t ion;

    GpsSat() {
        std::memset(this, 0, sizeof *this);
        hdr.length = 28;
        hdr.num = 2;
        hdr.sys = 1;
        obs.length = 156;
        obs.actual[0] = 1;
        obs.psvd[0] = 2.2e7;
        obs.dop[0] = -1234.5;
        opr.actual = 1;
        opr.af0 = 0.153949949890e-03;
        opr.af1 = -0.454747350886e-12;
        opr.af2 = 0.0;
        opr.toc = 259200;
        opr.toe = 259200;
        opr.crs = 29.59375;
        opr.deltaN = 0.475376937814e-08;
        opr.m0 = -0.172729451478e+01;
        opr.cuc = 0.150687992573e-05;
        opr.e = 0.904141401406e-02;
        opr.cus = 0.103265047073e-04;
        opr.sqrtA = 0.515363668251e+04;
        opr.cic = -0.156462192535e-06;
        opr.omega0 = 0.593659833961e+00;
        opr.cis = -0.726431608200e-07;
        opr.i0 = 0.941899917981e+00;
        opr.crc = 0.173343750000e+03;
        opr.omega = 0.276376221774e+01;
        opr.omegaDot = -0.804747823935e-08;
        opr.idot = -0.132148361698e-09;
        opr.tgd = -0.172294676304e-07;
        ion.alpha0 = 0.1118e-07; ion.alpha1 = 0.7451e-08;
        ion.alpha2 = -0.5960e-07; ion.alpha3 = -0.5960e-07;
        ion.beta0 = 0.9011e+05; ion.beta1 = 0.1638e+05;
        ion.beta2 = -0.1966e+06; ion.beta3 = -0.6554e+05;
    }
    void link(tblSatGps* s) {
        s->tblHdr = &hdr; s->tblObs = &obs; s->tblAddInf = &add;
        s->tblOprGps = &opr; s->tblTmPrmGps = &tmp; s->tblAlmGps = &alm;
        s->tblIonGps = &ion;
    }
};

struct GloSat {
    tblHdr_t hdr;
    tblObs_t obs;
    tblAddInf_t add;
    tblOprGlo_t opr[3];
    tblTmPrmGlo_t tmp[3];
    tblAlmGlo_t alm[3];

    GloSat() {
        std::memset(this, 0, sizeof *this);
        hdr.length = 28;
        hdr.num = 2;
        hdr.lit = 1;
        hdr.sys = 0;
        obs.length = 156;
        obs.actual[0] = 1;
        obs.psvd[0] = 2.0e7;
        obs.dop[0] = 2345.5;
        tblOprGlo_t& o = opr[0];
        o.actual = 1;
        o.tb = 11700;  /* 00:15 UTC = 03:15 Moscow time */
        o.x = 0.936473925781e+04 * 1000; o.vx = -0.267867088318e+00 * 1000; o.ax = 0.0;
        o.y = -0.159087973633e+05 * 1000; o.vy = 0.239853191376e+01 * 1000;
        o.ay = 0.186264514923e-08 * 1000;
        o.z = -0.176143896484e+05 * 1000; o.vz = -0.230765628815e+01 * 1000;
        o.az = 0.186264514923e-08 * 1000;
        o.gammaN = -0.272848410532e-11;
        o.tauN = -0.206762924790e-04;
    }
    void link(tblSatGlo* s) {
        s->tblHdr = &hdr; s->tblObs = &obs; s->tblAddInf = &add;
        for (int k = 0; k < 3; k++) {
            s->tblOprGlo[k] = &opr[k];
            s->tblTmPrmGlo[k] = &tmp[k];
            s->tblAlmGlo[k] = &alm[k];
        }
    }
};

/* The TLSE antenna, WGS-84. */
inline void tlse(double* xyz) {
    xyz[0] = 4627852.3986; xyz[1] = 119640.3423; xyz[2] = 4372994.4588;
}

/* An aligned copy of three doubles of a packed record (whose doubles may
 * sit on 4-byte boundaries and must not be read through a double*). */
struct Vec3 {
    double v[3];
    explicit Vec3(const void* p) { std::memcpy(v, p, sizeof v); }
};

inline double norm(const void* p) {
    Vec3 a(p);
    return std::sqrt(a.v[0] * a.v[0] + a.v[1] * a.v[1] + a.v[2] * a.v[2]);
}

}  // namespace satpos_test

#endif
