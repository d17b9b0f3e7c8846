"""The library's public records, declared as ctypes structures with the
same 4-byte packing as the C headers (include/tbl_*.h), and a read-only
view over them.

A record handed out by the library belongs to its handle and stays valid
until the next call on that handle that rewrites it; a View reads it in
place and refuses to write it.
"""
import ctypes as C

u8, i8, u16, i16, u32, i32, f64 = (C.c_uint8, C.c_int8, C.c_uint16, C.c_int16,
                                   C.c_uint32, C.c_int32, C.c_double)

NUM_SLOTS = 24          # satellite slots of one converter
NUM_SIG = 5             # signal places of an observation table
NUM_CRDSAT = 24         # rows of a satellite result list
NUM_PRGSAT = 56         # entries of a prediction list
NUM_ALM_GPS = 32
NUM_ALM_GLO = 24


class Record(C.Structure):
    """Base of every record: 4-byte packing, as in the headers."""
    _pack_ = 4


def _record(name, fields):
    return type(name, (Record,), {"_pack_": 4, "_fields_": fields})


# tbl_nav.h: navigation tables.
tblOprGps_t = _record("tblOprGps_t", [
    ("length", u16), ("actual", u8), ("subfr1", u8 * 30), ("subfr2", u8 * 30),
    ("subfr3", u8 * 30), ("health", u8), ("wn", u16), ("af0", f64), ("af1", f64),
    ("af2", f64), ("toc", u32), ("toe", u32), ("sqrtA", f64), ("cus", f64), ("e", f64),
    ("cuc", f64), ("m0", f64), ("deltaN", f64), ("crs", f64), ("idot", f64),
    ("omegaDot", f64), ("omega", f64), ("crc", f64), ("i0", f64), ("cis", f64),
    ("omega0", f64), ("cic", f64), ("ura", f64), ("tgd", f64), ("iodc", u8), ("iode", u8)])
tblTmPrmGps_t = _record("tblTmPrmGps_t", [
    ("length", u16), ("actual", u8), ("a1", f64), ("a0", f64), ("tot", u32), ("wnt", u32),
    ("dtLs", i32), ("wnLsf", u32), ("dn", u32), ("dtLsf", i32)])
tblIonGps_t = _record("tblIonGps_t", [("length", u16), ("actual", u8)] + [
    (n, f64) for n in ("alpha0", "alpha1", "alpha2", "alpha3",
                       "beta0", "beta1", "beta2", "beta3")])
tblAlmGpsSat_t = _record("tblAlmGpsSat_t", [
    ("length", u16), ("onEmpty", u8), ("healL", u8), ("toa", u32), ("af0", f64), ("af1", f64),
    ("m0", f64), ("omega", f64), ("omega0", f64), ("sqrtA", f64), ("omegaDot", f64),
    ("deltaI", f64), ("e", f64), ("reserved", u8 * 4)])
tblAlmGps_t = _record("tblAlmGps_t", [
    ("length", u16), ("actual", u8), ("toa", u32), ("wna", u32),
    ("alm", tblAlmGpsSat_t * NUM_ALM_GPS), ("tmResived", u32)])
tblOprGlo_t = _record("tblOprGlo_t", [
    ("length", u16), ("actual", u8), ("str", (u8 * 10) * 8), ("tb", u32), ("tk", u32)] + [
    (n, f64) for n in ("vx", "vy", "vz", "ax", "ay", "az", "x", "y", "z",
                       "gammaN", "tauN", "dTauN", "ft")] + [("nt", u16), ("m", u8)])
tblTmPrmGlo_t = _record("tblTmPrmGlo_t", [
    ("length", u16), ("actual", u8), ("na", u32), ("n4", u32), ("tauC", f64),
    ("tauGps", f64), ("b1", f64), ("b2", f64), ("kp", u8)])
tblAlmGloSat_t = _record("tblAlmGloSat_t", [
    ("length", u16), ("onErrData", u8), ("onEmpty", u8), ("onSystem", u8), ("num", u8),
    ("lit", u8)] + [(n, f64) for n in ("lambda_", "lambdaT", "dI", "dT", "dTdot", "eps",
                                       "omega", "tauA")])
tblAlmGlo_t = _record("tblAlmGlo_t", [
    ("length", u16), ("actual", u8), ("na", u32), ("n4", u32),
    ("alm", tblAlmGloSat_t * NUM_ALM_GLO), ("tmResived", u32)])

# tbl_sat.h: what the converter hands out per epoch.
tblHdr_t = _record("tblHdr_t", [
    ("length", u16), ("num", u8), ("lit", u8), ("sys", u8), ("reserved", u8),
    ("badNavInfCt", u8), ("badNavInfVt", u8), ("badNavInfL3", u8), ("aux", f64), ("um", f64)])
tblObs_t = _record("tblObs_t", [
    ("length", u16), ("tmZel", u32), ("actual", u8 * NUM_SIG), ("psvd", f64 * NUM_SIG),
    ("dop", f64 * NUM_SIG), ("faze", f64 * NUM_SIG), ("ampl", u32 * NUM_SIG)])
tblAddInf_t = _record("tblAddInf_t", [
    ("length", u16), ("actual", u8), ("chan", u8), ("flagB5", u8), ("flagB7", u8),
    ("present", u8 * 4), ("angle", f64 * 4), ("angleExtra", f64), ("aux8", u8 * 4),
    ("reserved", u8 * 4)])
tblMeteo = _record("tblMeteo", [
    ("actual", u8), ("temperature", f64), ("humidity", f64), ("pressure", f64)])
tblGpsUtc_t = _record("tblGpsUtc_t", [("actual", u8), ("dtGpsUtc", u32)])
tblSatGlo = _record("tblSatGlo", [
    ("tblHdr", C.POINTER(tblHdr_t)), ("tblObs", C.POINTER(tblObs_t)),
    ("tblAddInf", C.POINTER(tblAddInf_t)), ("tblOprGlo", C.POINTER(tblOprGlo_t) * 3),
    ("tblTmPrmGlo", C.POINTER(tblTmPrmGlo_t) * 3), ("tblAlmGlo", C.POINTER(tblAlmGlo_t) * 3)])
tblSatGps = _record("tblSatGps", [
    ("tblHdr", C.POINTER(tblHdr_t)), ("tblObs", C.POINTER(tblObs_t)),
    ("tblAddInf", C.POINTER(tblAddInf_t)), ("tblOprGps", C.POINTER(tblOprGps_t)),
    ("tblTmPrmGps", C.POINTER(tblTmPrmGps_t)), ("tblAlmGps", C.POINTER(tblAlmGps_t)),
    ("tblIonGps", C.POINTER(tblIonGps_t))])
lsttblSat_t = _record("lsttblSat_t", [
    ("tblGlo", tblSatGlo * NUM_SLOTS), ("numGlo", u32), ("tblGps", tblSatGps * NUM_SLOTS),
    ("numGps", u32), ("meteo", C.POINTER(tblMeteo))])
lsttblSat_t.filled = {"tblGlo": "numGlo", "tblGps": "numGps"}

# tbl_crd.h: satellite rows of one epoch.
tblCrdSat_t = _record("tblCrdSat_t", [
    ("num", u8), ("lit", i8), ("sys", u8), ("xyz", f64 * 3), ("vxyz", f64 * 3),
    ("acc", f64 * 3), ("psvd", f64), ("dop", f64), ("bad", u8)])
lsttblCrdSat_t = _record("lsttblCrdSat_t", [
    ("length", u32), ("tbl", C.POINTER(tblCrdSat_t)), ("num", u32), ("tm", u32)])
lsttblCrdSat_t.filled = {"tbl": "num"}

# tbl_pnt.h: the solution.
tblCrdPnt_t = _record("tblCrdPnt_t", [
    ("length", u16), ("actual", u8), ("sys", u8), ("numGlo", u8), ("lstGlo", u8 * 24),
    ("numGps", u8), ("lstGps", u8 * 24), ("xyz", f64 * 3), ("dt", f64), ("dop10", i32),
    ("tau", f64)])
tblSpdPnt_t = _record("tblSpdPnt_t", [
    ("length", u16), ("actual", u8), ("sys", u8), ("vxyz", f64 * 3), ("drift", f64),
    ("driftMean", f64), ("reserved", u8 * 4)])

# tbl_prg.h: the almanac prediction.
tblPrgSat_t = _record("tblPrgSat_t", [
    ("num", u8), ("lit", u8), ("sys", u8), ("delay", f64), ("dop", f64), ("az", f64),
    ("um", f64), ("actual", u8)] + [(n, f64) for n in ("x", "y", "z", "vx", "vy", "vz")])
lsttblPrgSat = _record("lsttblPrgSat", [
    ("length", u16), ("prgSat", C.POINTER(tblPrgSat_t)), ("numPrg", u32), ("tm", u32),
    ("pos", f64 * 3), ("posType", u8), ("posSys", u8), ("posMask", u8)])
lsttblPrgSat.filled = {"prgSat": "numPrg"}

# tbl_flt.h: filtering.
tblKalman2_t = _record("tblKalman2_t", [
    ("length", u16), ("actual", u8), ("tLast", u32), ("t0", u32)] + [
    (n, f64) for n in ("x", "v", "k1", "k2", "p11", "p12", "p21", "p22")] + [("error", i16)])
tblKalmanObs_t = _record("tblKalmanObs_t", [
    ("length", u16), ("actual", u8), ("sys", u8), ("num", u8), ("tmZel", u32),
    ("psvd", tblKalman2_t * NUM_SIG), ("dop", tblKalman2_t * NUM_SIG),
    ("faze", tblKalman2_t * NUM_SIG), ("reserved", u8 * 8)])
lsttblKalmanObs_t = _record("lsttblKalmanObs_t", [
    ("reserved", u32), ("tbl", C.POINTER(tblKalmanObs_t)), ("num", u32)])
lsttblKalmanObs_t.filled = {"tbl": "num"}

RECORDS = [tblOprGps_t, tblTmPrmGps_t, tblIonGps_t, tblAlmGpsSat_t, tblAlmGps_t, tblOprGlo_t,
           tblTmPrmGlo_t, tblAlmGloSat_t, tblAlmGlo_t, tblHdr_t, tblObs_t, tblAddInf_t,
           tblMeteo, tblGpsUtc_t, tblSatGlo, tblSatGps, lsttblSat_t, tblCrdSat_t,
           lsttblCrdSat_t, tblCrdPnt_t, tblSpdPnt_t, tblPrgSat_t, lsttblPrgSat, tblKalman2_t,
           tblKalmanObs_t, lsttblKalmanObs_t]


def _value(v, owner):
    """A field's value as Python reads it: numbers as they are, arrays as
    tuples, records as views, pointers as views of what they point to."""
    if isinstance(v, C.Array):
        return tuple(_value(x, owner) for x in v)
    if isinstance(v, C.Structure):
        return View(v, owner)
    if isinstance(v, C._Pointer):
        return View(v.contents, owner) if v else None
    return v


class View:
    """Read-only view of a record in place. Fields read as attributes
    (arrays as tuples, nested records and pointers as views); the lists'
    row pointers read as tuples of their filled rows. Nothing can be
    assigned. `record` is the ctypes structure underneath, `address` its
    address for the library's functions."""

    __slots__ = ("_rec", "_owner")

    def __init__(self, rec, owner=None):
        object.__setattr__(self, "_rec", rec)
        # The handle that owns the memory, kept alive while the view is.
        object.__setattr__(self, "_owner", owner)

    @property
    def record(self):
        return self._rec

    @property
    def address(self):
        return C.addressof(self._rec)

    def __getattr__(self, name):
        rec = self._rec
        filled = getattr(type(rec), "filled", {})
        if name in filled:
            ptr, n = getattr(rec, name), getattr(rec, filled[name])
            if isinstance(ptr, C._Pointer):
                return tuple(View(ptr[i], self._owner) for i in range(n)) if ptr else ()
            return tuple(_value(ptr[i], self._owner) for i in range(n))
        if name == "lambda":
            name = "lambda_"
        if name not in {f[0] for f in type(rec)._fields_}:
            raise AttributeError(f"{type(rec).__name__} has no field {name}")
        return _value(getattr(rec, name), self._owner)

    def __setattr__(self, name, value):
        raise AttributeError(f"{type(self._rec).__name__} is read-only")

    def __dir__(self):
        return [f[0] for f in type(self._rec)._fields_]

    def copy(self):
        """A copy of the record that stays when the library rewrites it."""
        return type(self._rec).from_buffer_copy(self._rec)

    def __repr__(self):
        names = [f[0] for f in type(self._rec)._fields_][:6]
        inner = ", ".join(f"{n}={getattr(self, n)!r}" for n in names
                          if not isinstance(getattr(self._rec, n), (C.Array, C._Pointer)))
        return f"<{type(self._rec).__name__} {inner}>"
