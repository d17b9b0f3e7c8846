"""Finding and loading the shared library, and the prototypes of its
exported functions (include/zel.h).

The library is looked for, in order: the file named by the environment
variable ZELNAV_LIBRARY; libzelnav.so* in this package's folder and the
three folders above it (an install puts the package under
LIBDIR/python3/dist-packages, the library in LIBDIR); the system's
search path (ctypes.util.find_library).
"""
import ctypes as C
import ctypes.util
import glob
import os

_P = C.c_void_p


def _candidates():
    env = os.environ.get("ZELNAV_LIBRARY")
    if env:
        yield env
        return
    here = os.path.dirname(os.path.abspath(__file__))
    folder = here
    for _ in range(4):
        for name in sorted(glob.glob(os.path.join(folder, "libzelnav.so*"))):
            yield name
        folder = os.path.dirname(folder)
    found = ctypes.util.find_library("zelnav")
    if found:
        yield found


def _load():
    tried = []
    for path in _candidates():
        try:
            return C.CDLL(path)
        except OSError as e:
            tried.append(f"{path}: {e}")
    raise OSError("zelnav: the shared library libzelnav.so was not found; set ZELNAV_LIBRARY "
                  "to its path" + ("".join("\n  " + t for t in tried)))


lib = _load()

# name: (result, arguments). Handles are passed as void*.
_PROTOTYPES = {
    "cnvx0c_init": (_P, []),
    "cnvx0c_finit": (None, [_P]),
    "cnvx0c_upx0c": (_P, [_P, _P]),
    "cnvx0c_getTblGpsUtc": (_P, [_P]),
    "cnvx0c_clear": (None, [_P]),
    "tmZelToDate": (C.c_int, [C.c_uint, C.POINTER(C.c_uint)]),
    "getTmZel": (C.c_uint, [_P]),
    "DateAlmGloToDate": (None, [C.c_uint, C.c_int, C.POINTER(C.c_uint)]),
    "crdsat_init": (_P, []),
    "crdsat_finit": (None, [_P]),
    "crdsat_get": (_P, [_P, _P, C.c_uint, C.c_int]),
    "crdsat_getGlo": (_P, [_P, _P, C.c_uint, C.c_int, C.c_int]),
    "crdsat_getGps": (_P, [_P, _P, C.c_uint, C.c_int]),
    "crdsat_setPnt": (None, [_P, C.POINTER(C.c_double), C.c_uint, C.c_uint]),
    "crdsat_clear": (None, [_P]),
    "crdpnt_init": (_P, []),
    "crdpnt_finit": (None, [_P]),
    "crdpnt_set": (None, [_P, C.c_int]),
    "crdpnt_get": (_P, [_P, _P]),
    "crdpnt_getSpd": (_P, [_P]),
    "crdpnt_getTau": (_P, [_P, _P, C.c_double]),
    "crdpnt_clear": (None, [_P]),
    "prgns_init": (_P, []),
    "prgns_finit": (None, [_P]),
    "prgns_getAlmanGlo": (_P, [_P, _P]),
    "prgns_getAlmanGps": (_P, [_P, _P, _P]),
    "prgns_getAlmanGps0": (_P, [_P, _P]),
    "prgns_get0": (_P, [_P, _P, _P, _P, C.c_uint]),
    "prgns_get1": (_P, [_P, _P]),
    "prgns_get2": (_P, [_P, _P, _P, C.c_uint, C.c_int]),
    "prgns_set": (None, [_P, C.POINTER(C.c_double), C.c_uint, C.c_uint, C.c_uint]),
    "prgns_clear": (None, [_P]),
    "prgns_getnumalmglo": (C.c_ubyte, [_P]),
    "prgns_getnumalmgps": (C.c_ubyte, [_P]),
    "filter_init": (_P, []),
    "filter_finit": (None, [_P]),
    "initStatic": (C.c_byte, [_P, C.POINTER(C.c_double), C.c_uint, C.POINTER(C.c_double),
                              C.c_uint, C.c_uint, C.c_ubyte]),
    "staticFilter": (C.c_byte, [_P, _P, C.c_uint]),
    "KalmanFilterObs0": (None, [_P, _P]),
    "KalmanFilterObs": (_P, [_P, _P]),
    "KalmanFilterCrdPnt0": (_P, [_P, C.c_uint, _P]),
    "raim_init": (_P, []),
    "raim_finit": (None, [_P]),
    "raimComb": (C.c_int, [_P, _P, _P, C.c_double, C.c_int]),
    "raimTau": (C.c_double, [_P, _P, _P]),
    "raimStats": (C.c_double, [_P, _P, _P]),
}

for _name, (_res, _args) in _PROTOTYPES.items():
    _fn = getattr(lib, _name)
    _fn.restype = _res
    _fn.argtypes = _args
