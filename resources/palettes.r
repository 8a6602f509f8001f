# The fixed palette: black, a cube of six levels a channel from white down, and ramps of the levels
# between them. A palette that is cut short, as beside a transparent entry, loses its last colours,
# so black and white stand at its start.

palette 3 {
    color 0 0 0
    cube 255 204 153 102 51 0 without 0 0 0
    ramp red 238 221 187 170 136 119 85 68 34 17
    ramp green 238 221 187 170 136 119 85 68 34 17
    ramp blue 238 221 187 170 136 119 85 68 34 17
    ramp grey 238 221 187 170 136 119 85 68 34 17
}
