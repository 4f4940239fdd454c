#!/usr/bin/env python3
"""Turns world-atlas' land-110m.json (TopoJSON) into coastline.bin; README.md beside this file tells the form.

usage: make_coastline.py land-110m.json coastline.bin
"""

import json
import struct
import sys

MAGIC = b"OVCL0001"


def decoded_arcs(topology):
    """The arcs in degrees: each is a run of steps on an integer grid."""
    (scale_x, scale_y), (shift_x, shift_y) = topology["transform"]["scale"], topology["transform"]["translate"]
    for arc in topology["arcs"]:
        x = y = 0
        points = []
        for dx, dy in arc:
            x, y = x + dx, y + dy
            points.append((x * scale_x + shift_x, y * scale_y + shift_y))
        yield points


def joined(indexes, arcs):
    """The ring of some arcs; a negative index is that arc backwards. Arcs share their end points."""
    ring = []
    for index in indexes:
        arc = arcs[index] if index >= 0 else arcs[~index][::-1]
        ring.extend(arc[1:] if ring else arc)
    return ring


def rings(topology):
    arcs = list(decoded_arcs(topology))
    shapes = topology["objects"]["land"]
    for shape in shapes.get("geometries", [shapes]):
        polygons = [shape["arcs"]] if shape["type"] == "Polygon" else shape["arcs"]
        for polygon in polygons:
            for ring in polygon:
                yield joined(ring, arcs)


def main(source, target):
    with open(source, encoding="utf-8") as file:
        shapes = list(rings(json.load(file)))
    with open(target, "wb") as file:
        file.write(MAGIC + struct.pack(">I", len(shapes)))
        for ring in shapes:
            file.write(struct.pack(">I", len(ring)))
            for longitude, latitude in ring:
                file.write(struct.pack(">hh", round(longitude * 100), round(latitude * 100)))
    print(f"{len(shapes)} rings, {sum(map(len, shapes))} points")


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])
