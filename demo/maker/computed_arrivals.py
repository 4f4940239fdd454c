"""arrival and assoc, computed: nobody has read these times off a seismogram.

For each large event, the times at which the direct P and S of the IASP91 model reach each
station of the site table. Every arrival says so: its auth is "computed". What only an
observation can give (amplitude, residual, first motion, ...) stays null.
"""

import math

from .feed_tables import jdate, seconds
from .travel_times import DirectWave

AUTH = "computed"
MODEL = "iasp91"
MIN_MAGNITUDE = 5.3
EXCLUDED_MAGNITUDE_TYPES = ("ml", "md")
# Nearer, the mantle's discontinuities make several P; farther, the core's shadow begins.
MIN_DEGREES, MAX_DEGREES = 25.0, 90.0
# Axis ratio squared of the WGS 84 ellipsoid, for geocentric latitudes.
AXIS_RATIO_SQUARED = (1.0 - 1.0 / 298.257223563) ** 2


def _geocentric(latitude):
    if abs(latitude) == 90.0:
        return math.radians(latitude)
    return math.atan(AXIS_RATIO_SQUARED * math.tan(math.radians(latitude)))


def distance_azimuth(from_lat, from_lon, to_lat, to_lon):
    """(degrees, azimuth in 0..360) of the great circle between geocentric positions."""
    lat1, lat2 = _geocentric(from_lat), _geocentric(to_lat)
    dlon = math.radians(to_lon - from_lon)
    east = math.cos(lat2) * math.sin(dlon)
    north = (math.cos(lat1) * math.sin(lat2)
             - math.sin(lat1) * math.cos(lat2) * math.cos(dlon))
    along = (math.sin(lat1) * math.sin(lat2)
             + math.cos(lat1) * math.cos(lat2) * math.cos(dlon))
    return (math.degrees(math.atan2(math.hypot(east, north), along)),
            math.degrees(math.atan2(east, north)) % 360.0)


def is_large(event):
    properties = event["properties"]
    return (properties["mag"] >= MIN_MAGNITUDE
            and properties["magType"] not in EXCLUDED_MAGNITUDE_TYPES)


def computed_arrivals(events, sites, lddate):
    """arrival and assoc tables; arrivals are numbered in order of time."""
    pairs = []
    for number, event in enumerate(events, start=1):
        if is_large(event):
            pairs += _arrivals_of(number, event, sites, lddate)
    pairs.sort(key=lambda pair: (pair[0]["time"], pair[0]["sta"]))
    for arid, (arrival, assoc) in enumerate(pairs, start=1):
        arrival["arid"] = assoc["arid"] = arid
    return {"arrival": [arrival for arrival, _ in pairs],
            "assoc": [assoc for _, assoc in pairs]}


def _arrivals_of(orid, event, sites, lddate):
    longitude, latitude, depth = event["geometry"]["coordinates"]
    origin_time = seconds(event["properties"]["time"])
    waves = {phase: DirectWave(phase, depth) for phase in ("P", "S")}
    pairs = []
    for site in sites:
        delta, esaz = distance_azimuth(latitude, longitude, site["lat"], site["lon"])
        if not MIN_DEGREES <= delta <= MAX_DEGREES:
            continue
        _, seaz = distance_azimuth(site["lat"], site["lon"], latitude, longitude)
        for phase, wave in waves.items():
            time = origin_time + wave.seconds(delta)
            pairs.append((
                {"sta": site["sta"], "time": time, "jdate": jdate(time), "iphase": phase,
                 "auth": AUTH, "lddate": lddate},
                # Not used to locate anything, hence not defining.
                {"orid": orid, "sta": site["sta"], "phase": phase, "delta": delta,
                 "seaz": seaz, "esaz": esaz, "timedef": "n", "vmodel": MODEL,
                 "lddate": lddate}))
    return pairs
