"""The Python module against the C side: record layouts against the
compiler's, fixes against `zelnav solve`, the log reader against damaged
logs, and the handle classes on the sample recording."""
import ctypes
import csv
import io
import os
import subprocess

import pytest

import zelnav
from zelnav import records

LOG = os.environ.get("ZELNAV_SAMPLE_LOG", "")
REF = (4627852.3986, 119640.3423, 4372994.4588)
need_log = pytest.mark.skipif(not os.path.exists(LOG), reason="ZELNAV_SAMPLE_LOG not set")


def test_records_have_the_c_layout():
    helper = os.environ.get("ZELNAV_RECORD_SIZES")
    if not helper:
        pytest.skip("ZELNAV_RECORD_SIZES not set")
    out = subprocess.run([helper], check=True, capture_output=True, text=True).stdout
    c_side = {}
    for line in out.splitlines():
        name, size, last = line.split()
        c_side[name] = (int(size), int(last))
    py_side = {}
    for rec in records.RECORDS:
        last = rec._fields_[-1][0]
        py_side[rec.__name__] = (ctypes.sizeof(rec), getattr(rec, last).offset)
    assert py_side == c_side
    # Where a record announces its length, that is its size too.
    assert ctypes.sizeof(records.tblCrdPnt_t) == 100
    assert ctypes.sizeof(records.tblAlmGps_t) == 2704


# How `zelnav solve` prints each column.
FORMATS = {"x": "%.4f", "y": "%.4f", "z": "%.4f", "lat": "%.9f", "lon": "%.9f", "h": "%.4f",
           "dt": "%.12e", "tau": "%.12e", "dop": "%.1f", "vx": "%.4f", "vy": "%.4f",
           "vz": "%.4f"}


@need_log
@pytest.mark.parametrize("mode", ["glo", "gps", "both"])
def test_solve_gives_the_fixes_of_the_command(mode):
    cli = os.environ.get("ZELNAV_CLI")
    if not cli:
        pytest.skip("ZELNAV_CLI not set")
    out = subprocess.run([cli, "solve", LOG, "--mode", mode], check=True, capture_output=True,
                         text=True).stdout
    expected = list(csv.DictReader(io.StringIO(out)))
    got = list(zelnav.solve(LOG, mode=mode))
    assert len(got) == len(expected) == 300
    assert sum(f.fix for f in got) > 250
    for fix, row in zip(got, expected):
        for name in zelnav.Fix._fields:
            v = getattr(fix, name)
            text = "" if v is None else FORMATS[name] % v if name in FORMATS else str(v)
            assert text == row[name], (fix.utc, name)


@need_log
def test_solve_array_holds_the_same_fixes():
    np = pytest.importorskip("numpy")
    arr = zelnav.solve_array(LOG, mode="gps")
    fixes = list(zelnav.solve(LOG, mode="gps"))
    assert arr.shape == (len(fixes),)
    good = arr["fix"] == 1
    assert good.sum() == sum(f.fix for f in fixes)
    assert np.isnan(arr["x"][~good]).all()
    assert np.allclose(arr["x"][good], [f.x for f in fixes if f.fix])
    assert str(arr["utc"][0]) == fixes[0].utc


@need_log
def test_read_log_skips_damaged_records(tmp_path):
    msgs = list(zelnav.read_log(LOG))
    assert len(msgs) == 300
    assert all(int.from_bytes(m.data[1:3], "little") == len(m.data) for m in msgs)
    header = zelnav.read_header(LOG)
    assert header.station and header.position is not None

    data = bytearray(open(LOG, "rb").read())
    data[msgs[2].offset] ^= 0xFF                    # third record: bad sync
    data[msgs[5].offset + 6 + 1] ^= 0x01            # sixth: message length disagrees
    cut = tmp_path / "damaged.zlog"
    cut.write_bytes(bytes(data[:-10]))              # last record cut off
    problems = []
    left = list(zelnav.read_log(str(cut), problems))
    assert [m.offset for m in left] == [m.offset for m in msgs[:2] + msgs[3:5] + msgs[6:-1]]
    # bad sync, bytes skipped, length disagreement, cut-off record: the
    # same places the command's reader reports
    assert len(problems) == 4
    cli = os.environ.get("ZELNAV_CLI")
    if cli:
        err = subprocess.run([cli, "solve", str(cut)], capture_output=True, text=True).stderr
        assert [p.split(": ")[0] for p in problems] == [e.split(": ")[0] for e in err.splitlines()]
    assert "bad sync" in problems[0] and "cut off" in problems[-1]


@need_log
def test_handles_on_the_sample_log():
    msgs = list(zelnav.read_log(LOG))
    with zelnav.Converter() as cnv, zelnav.Prediction() as prg, \
            zelnav.SatelliteComputer() as sat, zelnav.Solution(10) as pnt, zelnav.Raim() as raim, \
            zelnav.Filter() as flt:
        lat, lon, h = zelnav.xyz_to_blh(REF)
        prg.set((lat, lon, h), 1, 0, 10)
        sat.set_point(REF, 0, 0)
        for m in msgs:
            lst = cnv.decode(m.data)
            pred = prg.get1(lst)
            smoothed = flt.smooth_obs(lst)
        assert lst.numGlo == len(lst.tblGlo) > 0
        hdr = lst.tblGps[0].tblHdr
        assert hdr.sys == 1 and 1 <= hdr.num <= 32
        with pytest.raises(AttributeError):
            hdr.num = 3

        # Smoothing tables of GLONASS satellites of the epoch only.
        assert smoothed.num == len(smoothed.tbl) > 0
        assert {t.num for t in smoothed.tbl} <= {g.tblHdr.num for g in lst.tblGlo}
        assert all(t.sys == 0 and t.psvd[0].actual for t in smoothed.tbl)

        # The prediction holds satellites above the mask only.
        assert pred.numPrg == len(pred.prgSat) > 0
        assert all(s.um >= 10 for s in pred.prgSat)

        tm = zelnav.epoch_time(lst)
        assert zelnav.utc_text(tm) == "2024-01-01T12:04:41"
        rows = sat.get(lst, tm, cnv.gps_utc().dtGpsUtc)
        fix = pnt.get(rows)
        assert fix.actual == 1 and fix.numGps >= 4
        for sys, n, used in ((0, fix.numGlo, fix.lstGlo), (1, fix.numGps, fix.lstGps)):
            assert set(used[:n]) <= {r.num for r in rows.tbl if r.sys == sys}
        prev = fix.copy()
        code = raim.comb(rows, prev, 100.0, 10)
        assert code in (0, -32, -128)
    with pytest.raises(ValueError):
        cnv.decode(msgs[0].data)
