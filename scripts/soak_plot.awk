# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# Draws "frame,new,heap,resident" (bytes) as an SVG: MiB against frames. Called by scripts/soak.
function x(frame) { return left + width * frame / frames }
function y(bytes) { return top + height * (1 - bytes / (ceiling * mib)) }
function thousands(count,    text) {
    text = sprintf("%d", count)
    while (match(text, /[0-9][0-9][0-9][0-9]( |$)/)) text = substr(text, 1, RSTART) " " substr(text, RSTART + 1)
    return text
}
# The label stands `below` pixels lower than the end of its curve.
function curve(column, color, name, below,    n, points) {
    for (n = 2; n <= NR; ++n) {
        points = points sprintf("%.1f,%.1f ", x(frame[n]), y(value[n, column]))
    }
    printf "<polyline points=\"%s\" fill=\"none\" stroke=\"%s\" stroke-width=\"2\"/>\n", points, color
    printf "<text x=\"%.1f\" y=\"%.1f\" fill=\"%s\">%s</text>\n", left + width + 8, y(value[NR, column]) + 4 + below, color, name
}
NR > 1 {
    frame[NR] = $1
    for (column = 2; column <= 4; ++column) {
        value[NR, column] = $column
        if ($column > most) most = $column
    }
}
END {
    mib = 1024 * 1024
    left = 50; top = 40; width = 600; height = 220
    frames = frame[NR]
    ceiling = 10 * (int(most / (10 * mib)) + 1)
    printf "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" ", left + width + 160, top + height + 50
    print "font-family=\"DejaVu Sans, sans-serif\" font-size=\"12\">"
    print "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>"
    printf "<text x=\"10\" y=\"22\" font-size=\"14\">MiB held while every frame brings new telemetry keys</text>\n"
    for (n = 0; n <= ceiling; n += ceiling / 5) {
        printf "<line x1=\"%d\" x2=\"%d\" y1=\"%.1f\" y2=\"%.1f\" stroke=\"#e4e4e4\"/>", left, left + width, y(n * mib), y(n * mib)
        printf "<text x=\"%d\" y=\"%.1f\" text-anchor=\"end\">%g</text>\n", left - 6, y(n * mib) + 4, n
    }
    for (n = 0; n <= 5; ++n) {
        printf "<text x=\"%.1f\" y=\"%d\" text-anchor=\"middle\">%s</text>\n", x(frames * n / 5), top + height + 18, thousands(frames * n / 5)
    }
    printf "<text x=\"%d\" y=\"%d\" text-anchor=\"middle\">frames</text>\n", left + width / 2, top + height + 38
    curve(4, "#9a62b5", "resident", 0)
    curve(3, "#2a7de1", "heap", -5)
    curve(2, "#e0803a", "operator new", 5)
    print "</svg>"
}
