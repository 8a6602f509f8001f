# A dialog with every kind of item, for tests of the dialogs and of whoever operates them.

dialog 9000 "Test dialog" size 380 320 {
    1   button  "OK"           at 280 284  size 80 20
    2   button  "Cancel"       at 190 284  size 80 20
    3   check   "Automatic"    at 220 20   size 140 18
    4   popup   9001           at 220 46   size 140 20
    5   edit    "16"           at 300 74   size 60 20
    6   static  "^0:^1"        at 20 148   size 60 16
    7   user                   at 20 20    size 160 120
    8   user                   at 20 180   size 289 37
    9   user                   at 126 148  size 24 24
    10  user                   at 154 148  size 24 24
    11  static  "Number:"      at 220 78   size 70 16
    12  check   "Stay open"    at 220 104  size 140 18
    13  user                   at 210 10   size 160 124
    14  check   "Unavailable"  at 20 228   size 140 18  disabled
}

menu 9001 "Colours" { "Two" "Four" separator "Eight" disabled "Sixteen" }

strings 9000 { "Cancel" "Reset" }

alert 9002 size 300 100 {
    1  button  "OK"                   at 200 64  size 80 20
    2  static  "^1 comes after ^0."   at 20 20   size 260 32
}

cursor 9000 hotspot 8 8 {
    "................"
    "......####......"
    ".....#oooo#....."
    "....#oooooo#...."
    "...#oooooooo#..."
    "..#oooooooooo#.."
    ".#oooooooooooo#."
    "#oooooooooooooo#"
    "#oooooooooooooo#"
    ".#oooooooooooo#."
    "..#oooooooooo#.."
    "...#oooooooo#..."
    "....#oooooo#...."
    ".....#oooo#....."
    "......####......"
    "................"
}

picture 500 "../../resources/art/hand.png" size 24 24
picture 501 "../../resources/art/hand-selected.png" size 24 24
picture 510 "../../resources/art/magnifier-plus.png" size 24 24
picture 511 "../../resources/art/magnifier-plus-selected.png" size 24 24
