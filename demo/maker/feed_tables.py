"""origin, event, netmag, origerr and remark from the USGS feed.

What the feed does not say stays null.
"""

import datetime
import textwrap

# What the feed calls an event, in the codes of the CSS 3.0 standard: qt an earthquake with no
# further class, ex an explosion of unknown kind, ec a chemical explosion, which a quarry
# blast is.
ETYPES = {"earthquake": "qt", "explosion": "ex", "quarry blast": "ec"}

# The magnitudes that have a field of their own in origin. Other types of the same family
# (mb_lg, mww, md) are not the same magnitude and stand in netmag alone.
ORIGIN_MAGNITUDES = {"mb": "mbid", "ms": "msid", "ml": "mlid"}


def jdate(epoch):
    """yyyyddd of epoch seconds, UTC."""
    moment = datetime.datetime.fromtimestamp(int(epoch // 1), datetime.timezone.utc)
    return int(moment.strftime("%Y%j"))


def seconds(milliseconds):
    return milliseconds / 1000.0


def events_of(feed):
    """The feed's events in order of time; the first is number 1 everywhere."""
    events = sorted(feed["features"], key=lambda event: (event["properties"]["time"], event["id"]))
    declared = feed["metadata"]["count"]
    if declared != len(events):
        raise ValueError(f"the feed declares {declared} events and holds {len(events)}")
    return events


def feed_tables(events, schema):
    tables = {"origin": [], "event": [], "netmag": [], "origerr": [], "remark": []}
    remark_width = schema.width("remark", "remark")
    for number, event in enumerate(events, start=1):
        tables["origin"].append(_origin(number, event))
        tables["event"].append(_event(number, event))
        tables["netmag"].append(_netmag(number, event))
        if event["properties"]["rms"] is not None:
            tables["origerr"].append(_origerr(number, event))
        tables["remark"] += _remark(number, event, remark_width)
    return tables


def _origin(number, event):
    longitude, latitude, depth = event["geometry"]["coordinates"]
    properties = event["properties"]
    time = seconds(properties["time"])
    record = {
        "lat": latitude, "lon": longitude, "depth": depth, "time": time,
        "orid": number, "evid": number, "jdate": jdate(time),
        "etype": ETYPES[properties["type"]], "auth": properties["net"],
        "commid": number, "lddate": seconds(properties["updated"]),
    }
    kind = properties["magType"].lower()
    if kind in ORIGIN_MAGNITUDES and properties["mag"] is not None:
        record[kind] = properties["mag"]
        record[ORIGIN_MAGNITUDES[kind]] = number
    return record


def _event(number, event):
    properties = event["properties"]
    # The catalogue's own id is the one name that every event has, that is unique and that
    # fits; the place stands in remark.
    return {"evid": number, "evname": event["id"], "prefor": number,
            "auth": properties["net"], "commid": number,
            "lddate": seconds(properties["updated"])}


def _netmag(number, event):
    properties = event["properties"]
    # The feed's station count (nst) is that of the location, so nsta stays null.
    return {"magid": number, "net": properties["net"], "orid": number, "evid": number,
            "magtype": properties["magType"], "magnitude": properties["mag"],
            "auth": properties["net"], "lddate": seconds(properties["updated"])}


def _origerr(number, event):
    properties = event["properties"]
    return {"orid": number, "sdobs": properties["rms"],
            "lddate": seconds(properties["updated"])}


def _remark(number, event, width):
    # A place longer than the field goes on in records of the next line numbers.
    lines = textwrap.wrap(event["properties"]["place"], width)
    return [{"commid": number, "lineno": line, "remark": text,
             "lddate": seconds(event["properties"]["updated"])}
            for line, text in enumerate(lines, start=1)]
