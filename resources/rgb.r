# The options of an RGB picture, and its preview.

# Entries 6 and 7 of menu 16001 go with these.
strings 16000 {
    "" "" "" "" ""    # 1 to 5: not used
    "255"             # 6: colours to start with beside a transparent one
    "256"             # 7: and without
}

dialog 16000 "GIF89a Options" size 452 292 {
    1  button  "OK"                              at 348 252  size 88 24
    2  button  "Cancel"                          at 252 252  size 88 24
    3  button  "Load…"                           at 324 43   size 100 24
    4  user                                      at 172 168  size 44 18
    5  static  "Transparent colour:"             at 16 169   size 150 16
    6  static  ""                                at 16 169   size 150 16   # behind 5
    7  user                                      at 16 32    size 420 118  # around 3 and 9 to 18
    8  static  "Colours"                         at 16 12    size 200 16
    9  static  "Palette:"                        at 28 47    size 80 16
    10 popup   16000                             at 112 44   size 200 22
    11 static  "Number:"                         at 28 83    size 80 16
    12 static  ""                                at 28 83    size 80 16    # behind 11
    13 edit    "256"                             at 112 80   size 52 22
    14 popup   16001                             at 166 80   size 24 22
    15 check   "Interlaced"                      at 16 196   size 200 20
    16 check   "Include the comment"             at 16 220   size 200 20
    17 button  "Preview…"                        at 16 252   size 100 24
    18 check   "Fit the palette to this number"  at 112 112  size 312 20
}

menu 16000 "Palette" {
    "Exact colours"          # 1
    "Adaptive"               # 2
    "Fixed"                  # 3
}

# Entry 7 is what a picture without transparency starts with, entry 6 the largest one that leaves
# room for a transparent colour; both are chosen by number, and hold strings 7 and 6 of list 16000.
menu 16001 "Number of colours" {
    "8" "16" "32" "64" "128"   # 1 to 5
    "255"                      # 6
    "256"                      # 7
    separator
    "4" "2"                    # 9 and 10
}

# Styles of the options dialog's items: four bytes for each of 16, then one style, plain and gray,
# which an item has when its four bytes are 0008 (the style's colour counts) 0040 (where it lies).
# The bytes of items 17 and 18 would lie in the style; they have none.
bytes "ictb" 16000 {
    "00000000 00000000 00000000 00000000 00000000 00000000 00000000 00000000"
    "00000000 00000000 00000000 00000000 00000000 00000000 00000000 00000000"
    "0000 00 00 0000 8000 8000 8000"    # font, face, filler, size, red, green, blue
}

# The palette needs exactly 354 x 90. An image box of odd sides lets drags at 1:1 follow the mouse to
# the pixel.
dialog 16002 "GIF89a Preview" size 668 508 {
    1  button  "Done"     at 564 468  size 88 24
    2  user               at 16 16    size 531 351
    3  static  "^0:^1"    at 564 104  size 88 16
    4  user               at 16 402   size 354 90
    5  static  "Palette"  at 16 384   size 200 16
    6  user               at 568 40   size 24 24
    7  user               at 596 40   size 24 24
    8  user               at 564 36   size 60 32
    9  static  "Tools"    at 564 16   size 88 16
    10 static  "Zoom"     at 564 84   size 88 16
}

alert 2001 size 340 96 {
    1  button  "OK"  at 236 60   size 88 24
    2  static  "^0"  at 16 16    size 308 36
}
