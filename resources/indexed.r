# The options of an indexed picture. Columns begin at 16 and 436, and captions stand above what they
# name. The colour table needs exactly 354 x 90.

dialog 16001 "GIF89a Options" size 652 504 {
    1  button  "OK"                          at 548 464  size 88 24
    2  button  "Cancel"                      at 452 464  size 88 24
    3  user                                  at 16 32    size 402 302
    4  static  "^0:^1"                       at 574 40   size 60 16
    5  user                                  at 16 364   size 354 90
    6  check   "Interlaced"                  at 436 178  size 200 20
    7  check   "Include the comment"         at 436 202  size 200 20
    8  static  "Preview"                     at 16 12    size 200 16
    9  user                                  at 440 36   size 24 24
    10 user                                  at 468 36   size 24 24
    11 user                                  at 496 36   size 24 24
    12 user                                  at 592 136  size 44 18    disabled
    13 user                                  at 16 458   size 420 30
    14 user                                  at 436 32   size 88 32
    15 user                                  at 540 32   size 96 32
    16 popup   16004                         at 436 102  size 200 22
    17 user                                  at 294 350  size 76 16
    18 static  "Tools"                       at 436 12   size 88 16
    19 static  "Zoom"                        at 540 12   size 96 16
    20 static  "Transparency from channel:"  at 436 82   size 200 16
    21 static  "Transparent colour:"         at 436 137  size 150 16
    22 static  "Colour table"                at 16 346   size 200 16
}

# The picture's channels come behind its only entry.
menu 16004 "Transparency from channel" { "None" }

# Of the options dialogs.
strings 16001 {
    "Click colours here or in the picture to make them transparent,"  # 1: what to do,
    "Ctrl-click them to make them opaque again."                      # 2: in two lines
    "Channel "                                                        # 3: its number follows
    ""                                                                # 4: not used
    "Cancel"                                                          # 5: leaves the dialog
    "Reset"                                                           # 6: puts its items back
    "Colours: "                                                       # 7: their number follows
}
