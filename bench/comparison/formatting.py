"""Numbers and tables as the document has them."""


def number(value):
    if value is None:
        return "–"
    return f"{value:,.0f}" if value >= 100 or value == int(value) else f"{value:.1f}" if value >= 1 else f"{value:.2g}"


def ratio(value, other, limit=None):
    if not value or not other:
        return "–"
    part = value / other
    text = f"{part:.2f}" if part >= 0.095 else f"{part:.3f}"
    return text if limit is None or part <= limit else f"**{text}**"


def within(value, limit):
    text = number(value)
    return text if value is None or limit is None or value <= limit else f"**{text}**"


def table(head, rows):
    cells = [head, ["---"] * len(head), *rows]
    return ["| " + " | ".join(line) + " |" for line in cells]
