# Turns track key frames (see vtest-tracks.txt) into a script for orn-overlay: for every frame from a
# track's first key frame to its last, a box and a label above it, in the track's own colour.

BEGIN {
    colours = split("#ffb000 #35c4ff #7ddc1f #ff6f91 #c58cff #ffe14d #2fe0c0 #ff8c42", palette, " ")
    label_height = 24
}

/^#/ || NF == 0 { next }

($2 in frame) {
    # Up to this key frame; the frame itself begins the next stretch.
    for (f = frame[$2]; f < $1; ++f)
        overlay(f, $2, (f - frame[$2]) / ($1 - frame[$2]))
}

{
    frame[$2] = $1
    for (edge = 3; edge <= 6; ++edge)
        last[$2, edge] = $edge
}

END {
    $0 = ""
    for (id in frame) {
        for (edge = 3; edge <= 6; ++edge)
            $edge = last[id, edge]
        overlay(frame[id], id, 0)
    }
}

# share: how far the frame lies from the last key frame toward the current one.
function overlay(f, id, share,    edge, box, colour) {
    for (edge = 3; edge <= 6; ++edge)
        box[edge] = int(last[id, edge] + share * ($edge - last[id, edge]) + 0.5)
    colour = palette[(id - 1) % colours + 1]
    # A frame's right and bottom lines belong to it, the edges of a track do not.
    printf "%d box %d %d %d %d %s\n", f, box[3], box[4], box[5] - 1, box[6] - 1, colour
    printf "%d label %d %d black %s \"person %d\"\n", f, box[3], box[4] - label_height, colour, id
}
