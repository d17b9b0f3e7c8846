/*
 * Reading a VT field of the position table out of a stored string. Shared
 * by the three VT collectors; integer fields are rounded the way every
 * navigation decoder rounds them.
 */
#ifndef ZELNAV_NAVINF_GLO_VT_READ_H
#define ZELNAV_NAVINF_GLO_VT_READ_H

#include <cmath>

#include "navinf_glo_vt_fields.h"
#include "navinf_str.h"

inline double gloVtGet(const NavInfStr_t& s, const GloVtField& f) {
    return NavInfStr_t::GetValue(s.getData(), f.pos, f.len, f.sign, f.scale);
}

inline int gloVtGetInt(const NavInfStr_t& s, const GloVtField& f) {
    return NavInfStr_t::Round(gloVtGet(s, f));
}

/* The magnitude test of the decoders: a value equal to the limit passes,
 * a NaN fails (every comparison with a NaN is false). */
inline bool gloVtWithin(double v, double limit) {
    return std::fabs(v) <= limit;
}

#endif
