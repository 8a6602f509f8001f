# The fixed palette: a cube of six levels a channel from white down, ramps of the levels between
# them, and black, which the cube leaves to the last entry.

palette 3 {
    cube 255 204 153 102 51 0 without 0 0 0
    ramp red 238 221 187 170 136 119 85 68 34 17
    ramp green 238 221 187 170 136 119 85 68 34 17
    ramp blue 238 221 187 170 136 119 85 68 34 17
    ramp grey 238 221 187 170 136 119 85 68 34 17
    color 0 0 0
}
