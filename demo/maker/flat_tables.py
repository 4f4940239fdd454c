"""Writes fixed-width tables by the layout in a schema file.

The schema file is the only place where widths, formats and null texts are known: a maker of
records names the fields it has values for, and every other field gets its null text.
"""

import re
from pathlib import Path

import yaml


class LayoutError(ValueError):
    """A value, field or table that the schema has no place for."""


class Attribute:
    """One attribute: type, width, C format, null text."""

    def __init__(self, name, entry):
        self.name = name
        self.type = entry["type"]
        self.width = int(entry["width"])
        self.format = entry["format"]
        self.null = entry["null"]
        self.range = entry.get("range", "")
        match = re.fullmatch(r"%[-+ 0#]*\d*(?:\.\d+)?([dfegs])", self.format)
        if not match:
            raise LayoutError(f"{name}: no C conversion: {self.format}")
        self.is_text = match.group(1) == "s"
        self.is_integer = match.group(1) == "d"

    def text(self, value):
        """The field's text, exactly `width` characters; None is the null."""
        if value is None:
            text = self.null
        elif self.is_text:
            text = str(value)
            if "\n" in text or not text.isascii():
                raise LayoutError(f"{self.name}: not plain text: {text!r}")
        else:
            # Adding zero turns a negative zero into zero.
            text = self.format % (int(value) if self.is_integer else float(value) + 0.0)
        text = text.strip()
        if len(text) > self.width:
            raise LayoutError(f"{self.name}: {text!r} is wider than {self.width}")
        if value is not None and text == self.null.strip():
            raise LayoutError(f"{self.name}: the value {value!r} would read as missing")
        return text.ljust(self.width) if self.is_text else text.rjust(self.width)


class Schema:
    """The attributes and relations of one schema file."""

    def __init__(self, path):
        with open(path, encoding="utf-8") as stream:
            # Every scalar is taken as the text it is: `no` and `1.0` stay themselves.
            document = yaml.load(stream, Loader=yaml.BaseLoader)
        self.timestamp = document.get("timestamp", "")
        self.attributes = {name: Attribute(name, entry)
                           for name, entry in document["attributes"].items()}
        self.relations = document["relations"]

    def fields(self, relation):
        if relation not in self.relations:
            raise LayoutError(f"the schema has no relation {relation}")
        return [self.attributes[name] for name in self.relations[relation]["fields"]]

    def record(self, relation, values):
        """One line of a table: fields in schema order, a blank between two, a line feed."""
        fields = self.fields(relation)
        unknown = set(values) - {field.name for field in fields}
        if unknown:
            raise LayoutError(f"{relation} has no field {', '.join(sorted(unknown))}")
        return " ".join(field.text(values.get(field.name)) for field in fields) + "\n"

    def width(self, relation, attribute):
        for field in self.fields(relation):
            if field.name == attribute:
                return field.width
        raise LayoutError(f"{relation} has no field {attribute}")


def write_tables(schema, tables, folder, database):
    """Writes `folder/database.relation` for every relation of `tables`.

    All records are made before the first file is touched, so that a value that does not fit
    leaves the tables as they were.
    """
    texts = {}
    for relation, records in tables.items():
        lines = []
        for number, values in enumerate(records):
            try:
                lines.append(schema.record(relation, values))
            except LayoutError as error:
                raise LayoutError(f"{relation}, record {number}: {error}") from None
        texts[relation] = "".join(lines)
    for relation, text in texts.items():
        (Path(folder) / f"{database}.{relation}").write_bytes(text.encode("ascii"))
