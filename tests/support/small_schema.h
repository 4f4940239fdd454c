#ifndef ORVANE_TESTS_SMALL_SCHEMA_H
#define ORVANE_TESTS_SMALL_SCHEMA_H

#include <string>

/* A schema of a few relations with every field type, every kind of key and ids that link them. Relations, in
 * order: site, origin, arrival, assoc, event, remark, kinds. */
inline std::string smallSchemaText()
{
    return R"yaml(name: small
description: a small schema
detail: |
  Made for tests:
  every type, every kind of key.
timestamp: lddate
attributes:
  sta: {type: string, width: 6, format: "%-6s", null: "-", description: station code, detail: "Code of the station."}
  ondate: {type: yearday, width: 8, format: "%8d", null: "-1", description: first day of operation}
  offdate: {type: yearday, width: 8, format: "%8d", null: "-1", description: last day of operation}
  lat: {type: real, width: 9, format: "%9.4f", null: "-999.0000", range: "lat >= -90.0 && lat <= 90.0", units: degrees, description: latitude, detail: "Geographic latitude, north positive."}
  lon: {type: real, width: 9, format: "%9.4f", null: "-999.0000", range: "lon >= -180.0 && lon <= 180.0", units: degrees, description: longitude}
  elev: {type: real, width: 9, format: "%9.4f", null: "-999.0000", units: kilometres, description: elevation}
  staname: {type: string, width: 50, format: "%-50s", null: "-", description: station name}
  depth: {type: real, width: 9, format: "%9.4f", null: "-999.0000", units: kilometres, description: depth}
  time: {type: time, width: 17, format: "%17.5f", null: "-9999999999.99900", units: seconds, description: epoch time}
  orid: {type: integer, width: 8, format: "%8d", null: "-1", range: "orid > 0", description: origin id}
  evid: {type: integer, width: 8, format: "%8d", null: "-1", range: "evid > 0", description: event id}
  prefor: {type: integer, width: 8, format: "%8d", null: "-1", description: preferred origin}
  arid: {type: integer, width: 8, format: "%8d", null: "-1", range: "arid > 0", description: arrival id}
  jdate: {type: yearday, width: 8, format: "%8d", null: "-1", description: julian date}
  phase: {type: string, width: 8, format: "%-8s", null: "-", description: phase}
  delta: {type: real, width: 8, format: "%8.3f", null: "-1.000", units: degrees, description: distance}
  mb: {type: real, width: 7, format: "%7.2f", null: "-999.00", description: body-wave magnitude}
  auth: {type: string, width: 15, format: "%-15s", null: "-", description: author}
  commid: {type: integer, width: 8, format: "%8d", null: "-1", range: "commid > 0", description: remark id}
  lineno: {type: integer, width: 8, format: "%8d", null: "-1", description: line number}
  remark: {type: string, width: 80, format: "%-80s", null: "-", description: remark}
  flag: {type: boolean, width: 2, format: "%2d", null: "-1", description: a yes or no}
  bundle: {type: dbptr, width: 16, format: "%16s", null: "-", description: rows of a group}
  lddate: {type: time, width: 17, format: "%17.5f", null: "-9999999999.99900", units: seconds, description: load date}
relations:
  site:
    fields: [sta, ondate, offdate, lat, lon, elev, staname, lddate]
    primary: [sta, {range: "ondate::offdate", covers: [jdate, time]}]
    description: station locations
    detail: |
      Where stations stand.
  origin:
    fields: [lat, lon, depth, time, orid, evid, mb, auth, commid, lddate]
    primary: [lat, lon, depth, time]
    alternate: [orid]
    foreign: [evid, commid]
    defines: orid
    description: locations of events
    detail: Where and when.
  arrival:
    fields: [sta, time, arid, jdate, phase, auth, commid, lddate]
    primary: [sta, time]
    alternate: [arid]
    foreign: [commid]
    defines: arid
    description: arrivals of waves
  assoc:
    fields: [arid, orid, sta, phase, delta, lddate]
    primary: [arid, orid]
    foreign: [arid, orid]
    description: arrivals that belong to origins
  event:
    fields: [evid, prefor, auth, lddate]
    primary: [evid]
    foreign: [prefor]
    defines: evid
    description: events
  remark:
    fields: [commid, lineno, remark, lddate]
    primary: [commid, lineno]
    defines: commid
    description: comments
  kinds:
    fields: [flag, orid, lat, time, jdate, sta, bundle, lddate]
    primary: [orid]
    description: one field of every type
)yaml";
}

#endif
