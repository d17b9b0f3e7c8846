"""The library's handle families as classes. Each object owns one handle:
created with the object, destroyed by close() or at the end of a `with`
block. A closed handle refuses every call (the library itself would stop
the process on a null handle).

Records come back as read-only views (records.View) of the handle's own
storage: they change with the next call on the same handle that rewrites
them; View.copy() keeps one. Functions that take a record accept a view or
a ctypes structure of records.py.
"""
import ctypes as C

from . import records as R
from ._lib import lib


def _addr(rec):
    if rec is None:
        return None
    if isinstance(rec, R.View):
        return rec.address
    return C.addressof(rec)


def _doubles(values, n):
    values = list(values)
    if len(values) != n:
        raise ValueError(f"expected {n} numbers, got {len(values)}")
    return (C.c_double * n)(*values)


def epoch_time(lst):
    """Receiver time (tmZel) of a converter list; 0 when it is empty."""
    return lib.getTmZel(_addr(lst))


class _Handle:
    _prefix = ""

    def __init__(self):
        self._h = getattr(lib, self._prefix + "_init")()
        if not self._h:
            raise MemoryError(f"{self._prefix}_init failed")

    @property
    def h(self):
        if not self._h:
            raise ValueError(f"{type(self).__name__} is closed")
        return self._h

    def close(self):
        if getattr(self, "_h", None):
            getattr(lib, self._prefix + "_finit")(self._h)
            self._h = None

    def __enter__(self):
        return self

    def __exit__(self, *exc):
        self.close()

    def __del__(self):
        try:
            self.close()
        except Exception:   # the library may be gone already at interpreter exit
            pass

    def _view(self, address, kind):
        return R.View(kind.from_address(address), self) if address else None


class Converter(_Handle):
    """Decoder of 0x0C messages (cnvx0c_*)."""
    _prefix = "cnvx0c"

    def decode(self, message):
        """Decodes one complete message (bytes); returns the epoch's list
        (lsttblSat_t view)."""
        buf = C.create_string_buffer(bytes(message), len(message))
        self._last = buf    # the converter may look at it until the next message
        return self._view(lib.cnvx0c_upx0c(self.h, buf), R.lsttblSat_t)

    def gps_utc(self):
        return self._view(lib.cnvx0c_getTblGpsUtc(self.h), R.tblGpsUtc_t)

    def clear(self):
        lib.cnvx0c_clear(self.h)


class SatelliteComputer(_Handle):
    """Satellite positions and corrected pseudoranges (crdsat_*)."""
    _prefix = "crdsat"

    def get(self, lst, tm, d_utc):
        """Both systems: the lsttblCrdSat_t view of the epoch's rows."""
        return self._view(lib.crdsat_get(self.h, _addr(lst), tm, d_utc), R.lsttblCrdSat_t)

    def get_glo(self, lst, tm, sig1, sig2):
        return self._view(lib.crdsat_getGlo(self.h, _addr(lst), tm, sig1, sig2),
                          R.lsttblCrdSat_t)

    def get_gps(self, lst, tm, d_utc):
        return self._view(lib.crdsat_getGps(self.h, _addr(lst), tm, d_utc), R.lsttblCrdSat_t)

    def set_point(self, pnt, form=0, datum=0):
        """Reference point: form 0 X, Y, Z (m), 1 latitude, longitude
        (degrees), height (m); datum 0 WGS-84, 1 PZ-90."""
        lib.crdsat_setPnt(self.h, _doubles(pnt, 3), form, datum)

    def clear(self):
        lib.crdsat_clear(self.h)


class Solution(_Handle):
    """Position solution (crdpnt_*); mode 0 GLONASS, 1 GPS, 10 both."""
    _prefix = "crdpnt"

    def __init__(self, mode=None):
        super().__init__()
        if mode is not None:
            self.set(mode)

    def set(self, mode):
        lib.crdpnt_set(self.h, mode)

    def get(self, rows):
        return self._view(lib.crdpnt_get(self.h, _addr(rows)), R.tblCrdPnt_t)

    def speed(self):
        return self._view(lib.crdpnt_getSpd(self.h), R.tblSpdPnt_t)

    def get_tau(self, rows, tau):
        return self._view(lib.crdpnt_getTau(self.h, _addr(rows), tau), R.tblCrdPnt_t)

    def clear(self):
        lib.crdpnt_clear(self.h)


class Raim(_Handle):
    """Integrity monitor (raim_*). `pnt` is a tblCrdPnt_t of the caller's
    (a ctypes structure, e.g. View.copy()): comb() writes the accepted fix
    into it."""
    _prefix = "raim"

    def comb(self, rows, pnt, max_speed, mode):
        return lib.raimComb(self.h, _addr(rows), _addr(pnt), max_speed, mode)

    def tau(self, rows, pnt):
        return lib.raimTau(self.h, _addr(rows), _addr(pnt))

    def stats(self, rows, pnt):
        return lib.raimStats(self.h, _addr(rows), _addr(pnt))


class Prediction(_Handle):
    """Almanac prediction of the visible satellites (prgns_*)."""
    _prefix = "prgns"

    def set(self, pos, pos_type=1, pos_sys=0, mask=5):
        """pos_type 1: latitude, longitude (degrees), height (m); else X, Y,
        Z (m). pos_sys 0 WGS-84, 1 PZ-90. mask in whole degrees."""
        lib.prgns_set(self.h, _doubles(pos, 3), pos_type, pos_sys, mask)

    def almanac_glo(self, lst):
        return self._view(lib.prgns_getAlmanGlo(self.h, _addr(lst)), R.tblAlmGlo_t)

    def almanac_gps(self, lst):
        """The held GPS almanac and the time parameters that came with it
        (a tblTmPrmGps_t of this object's own)."""
        self._tp = R.tblTmPrmGps_t()
        alm = self._view(lib.prgns_getAlmanGps(self.h, _addr(lst), C.addressof(self._tp)),
                         R.tblAlmGps_t)
        return alm, R.View(self._tp, self)

    def get0(self, glo, gps, tp, t):
        return self._view(lib.prgns_get0(self.h, _addr(glo), _addr(gps), _addr(tp), t),
                          R.lsttblPrgSat)

    def get1(self, lst):
        return self._view(lib.prgns_get1(self.h, _addr(lst)), R.lsttblPrgSat)

    def get2(self, glo, gps, t, dt_ls):
        return self._view(lib.prgns_get2(self.h, _addr(glo), _addr(gps), t, dt_ls),
                          R.lsttblPrgSat)

    def source_glo(self):
        return lib.prgns_getnumalmglo(self.h)

    def source_gps(self):
        return lib.prgns_getnumalmgps(self.h)

    def clear(self):
        lib.prgns_clear(self.h)


class Filter(_Handle):
    """Observation smoothing, static averaging and position filter
    (filter_*). Records to filter are the caller's tblCrdPnt_t structures
    (e.g. View.copy()); smoothing works on a converter list in place."""
    _prefix = "filter"

    def init_static(self, pos, t0, k, n_max, dop_max, mode):
        """k: end gains of X, Y, Z, clock and (mode 10) time offset; the
        library reads five, so a shorter list is padded with zeros."""
        k = list(k) + [0.0] * (5 - len(k))
        return lib.initStatic(self.h, _doubles(pos, 3), t0, _doubles(k, 5), n_max, dop_max,
                              mode)

    def static(self, rec, t):
        return lib.staticFilter(self.h, _addr(rec), t)

    def smooth_obs_in_place(self, lst):
        lib.KalmanFilterObs0(self.h, _addr(lst))

    def smooth_obs(self, lst):
        return self._view(lib.KalmanFilterObs(self.h, _addr(lst)), R.lsttblKalmanObs_t)

    def position(self, t, rec):
        return self._view(lib.KalmanFilterCrdPnt0(self.h, t, _addr(rec)), R.tblCrdPnt_t)
