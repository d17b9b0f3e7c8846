"""zelnav from Python: the navigation processor's C library through ctypes.

    import zelnav
    for fix in zelnav.solve("tlse_1200_5min.zlog", mode="both"):
        print(fix.utc, fix.lat, fix.lon, fix.h)

The handle families are classes that close their handle at the end of a
`with` block: Converter (cnvx0c), SatelliteComputer (crdsat), Solution
(crdpnt), Raim, Prediction (prgns), Filter. Records come back as
read-only views (records.View). read_log() yields the messages of a log,
solve() its fixes as tuples, solve_array() as a numpy array.
"""
from . import records
from .handles import epoch_time, Converter, Filter, Prediction, Raim, SatelliteComputer, Solution
from .log import Message, read_header, read_log
from .records import View
from .solve import Fix, solve, solve_array, utc_text, xyz_to_blh

__all__ = ["Converter", "SatelliteComputer", "Solution", "Raim", "Prediction", "Filter",
           "View", "records", "Message", "read_log", "read_header", "Fix", "solve",
           "solve_array", "utc_text", "xyz_to_blh", "epoch_time"]
