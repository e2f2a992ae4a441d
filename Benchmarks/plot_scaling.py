#!/usr/bin/env python3
"""Draws the table that scaling_benchmark --csv writes: cost per point and memory per element against size.

usage: plot_scaling.py scaling.csv scaling.svg
"""
import csv
import html
import math
import sys

PANEL_WIDTH, PANEL_HEIGHT = 420, 300
LEFT, TOP, GAP, BOTTOM = 80, 50, 100, 150
COLOURS = ["#0b5394", "#cc4125", "#38761d", "#b45f06", "#674ea7", "#45818e", "#7f6000", "#a64d79"]


def read_series(path):
    """Per call, its points as (source elements, nanoseconds per point, bytes per source element)."""
    series = {}
    with open(path, newline="", encoding="utf-8") as file:
        for row in csv.DictReader(file):
            point = tuple(float(row[key]) for key in ("source_elements", "ns_per_point", "bytes_per_element"))
            series.setdefault(row["series"], []).append(point)
    if not series:
        raise SystemExit(f"{path} holds no results")
    return {name: sorted(points) for name, points in series.items()}


def nice_step(largest):
    """A step of 1, 2 or 5 times a power of ten that divides the axis into about five parts."""
    raw = largest / 5
    power = 10 ** math.floor(math.log10(raw))
    return next(factor * power for factor in (1, 2, 5, 10) if factor * power >= raw)


def text(x, y, content, anchor="middle", extra=""):
    return f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" {extra}>{html.escape(content)}</text>'


def line(x1, y1, x2, y2, style):
    return f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" {style}/>'


def decade_label(exponent):
    return {3: "1 000", 4: "10 000", 5: "100 000", 6: "1 000 000", 7: "10 000 000"}.get(exponent, f"1e{exponent}")


def panel(series, column, title, left):
    """One diagram: logarithmic in size, linear in cost from 0."""
    sizes = [point[0] for points in series.values() for point in points]
    first, last = math.floor(math.log10(min(sizes))), math.ceil(math.log10(max(sizes)))
    last = max(last, first + 1)
    largest = max(point[column] for points in series.values() for point in points)
    step = nice_step(largest)
    top_value = step * math.ceil(largest / step)

    def x_of(size):
        return left + PANEL_WIDTH * (math.log10(size) - first) / (last - first)

    def y_of(value):
        return TOP + PANEL_HEIGHT * (1 - value / top_value)

    parts = [text(left + PANEL_WIDTH / 2, TOP - 18, title, extra='font-weight="bold"')]
    for i in range(round(top_value / step) + 1):
        y = y_of(i * step)
        parts.append(line(left, y, left + PANEL_WIDTH, y, 'stroke="#dddddd"'))
        parts.append(text(left - 8, y + 4, f"{i * step:g}", "end"))
    for exponent in range(first, last + 1):
        x = x_of(10**exponent)
        parts.append(line(x, TOP, x, TOP + PANEL_HEIGHT, 'stroke="#dddddd"'))
        parts.append(text(x, TOP + PANEL_HEIGHT + 18, decade_label(exponent)))
    parts.append(text(left + PANEL_WIDTH / 2, TOP + PANEL_HEIGHT + 40, "source elements"))
    for colour, points in zip(cycle_colours(), series.values()):
        path = " ".join(f"{x_of(point[0]):.1f},{y_of(point[column]):.1f}" for point in points)
        parts.append(f'<polyline points="{path}" fill="none" stroke="{colour}" stroke-width="2"/>')
        for point in points:
            parts.append(f'<circle cx="{x_of(point[0]):.1f}" cy="{y_of(point[column]):.1f}" r="3.5" fill="{colour}"/>')
    return parts


def cycle_colours():
    while True:
        yield from COLOURS


def legend(series):
    parts = []
    for i, (colour, name) in enumerate(zip(cycle_colours(), series)):
        x = LEFT + (i % 2) * (PANEL_WIDTH + GAP)
        y = TOP + PANEL_HEIGHT + 70 + 20 * (i // 2)
        parts.append(line(x, y - 4, x + 24, y - 4, f'stroke="{colour}" stroke-width="3"'))
        parts.append(text(x + 32, y, name, "start"))
    return parts


def draw(series):
    width = LEFT + 2 * PANEL_WIDTH + GAP + 40
    height = TOP + PANEL_HEIGHT + BOTTOM
    parts = [
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" height="{height}" '
        'font-family="sans-serif" font-size="12">',
        f'<rect width="{width}" height="{height}" fill="white"/>',
        *panel(series, 1, "processor time, nanoseconds per point", LEFT),
        *panel(series, 2, "extra memory, bytes per source element", LEFT + PANEL_WIDTH + GAP),
        *legend(series),
        "</svg>",
    ]
    return "\n".join(parts) + "\n"


def main():
    if len(sys.argv) != 3:
        raise SystemExit(__doc__.strip())
    with open(sys.argv[2], "w", encoding="utf-8") as file:
        file.write(draw(read_series(sys.argv[1])))


if __name__ == "__main__":
    main()
