# A dialog with the preview, read-out and tools where the indexed options dialog has them, and some
# items of other kinds.
dialog 7000 "Tools" size 260 180 {
    1  button   "OK"           at 10 150   size 60 20
    2  button   "Cancel"       at 80 150   size 60 20
    3  user                    at 10 10    size 102 102
    4  static   "^0:^1"        at 10 120   size 60 16
    5  check    "Interlaced"   at 130 80   size 100 18
    6  popup    7001           at 130 100  size 100 20
    7  edit     "256"          at 130 130  size 60 16
    8  user                    at 126 50   size 20 20  disabled
    9  user                    at 130 10   size 24 24
    10 user                    at 154 10   size 24 24
    11 user                    at 178 10   size 24 24
    12 user                    at 126 6    size 80 32
}
menu 7001 "Channel" { "None" "Opacity" }
