"""The figures as an SVG picture: one group of bars a load, one bar a server."""

from html import escape

WIDTH, LABEL, BAR, GAP, HEAD = 760, 190, 16, 14, 34
COLOURS = {"dnsmasq": "#8a8f98", "dnsdist": "#b9bdc4"}
OURS = ("#1d5fa8", "#3f86d1", "#73abe6", "#a3c8ef", "#c9def6")


def text(x, y, words, size=12, anchor="start", weight="normal"):
    return (f'<text x="{x}" y="{y}" font-size="{size}" text-anchor="{anchor}" font-weight="{weight}">'
            f"{escape(words)}</text>")


def bars(y, title, rows, colours):
    """One group; rows are (server, value). Gives its elements and the y below it."""
    parts = [text(0, y + 14, title, 13, weight="bold")]
    y += 22
    scale = (WIDTH - LABEL - 70) / max(value for _, value in rows)
    for server, value in rows:
        length = value * scale
        parts.append(text(LABEL - 8, y + 12, server, anchor="end"))
        parts.append(f'<rect x="{LABEL}" y="{y}" width="{length:.1f}" height="{BAR - 3}" fill="{colours[server]}"/>')
        parts.append(text(LABEL + length + 6, y + 12, f"{value:.1f}"))
        y += BAR
    return parts, y + GAP


def colours_of(servers):
    ours = iter(OURS * 4)
    return {server: COLOURS.get(server) or next(ours) for server in servers}


def picture(results, figure, heading):
    """`results` is {server: {load: {figure: value}}}."""
    colours = colours_of(results)
    parts, y = [text(0, 18, heading, 15, weight="bold")], HEAD
    for load in next(iter(results.values())):
        group, y = bars(y, load, [(server, loads[load][figure]) for server, loads in results.items()], colours)
        parts += group
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="-10 0 {WIDTH + 20} {y}" font-family="sans-serif">\n'
            f'<rect x="-10" width="{WIDTH + 20}" height="{y}" fill="white"/>\n' + "\n".join(parts) + "\n</svg>\n")
