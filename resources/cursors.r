# Mouse cursors: '#' is black, 'o' white, '.' see-through. White edges keep them visible on dark
# pictures.

# The plain eyedropper; its tip takes the colour.
cursor 2000 hotspot 1 14 {
    "...........o##o."
    ".........oo####o"
    "........o#o####o"
    ".......o######o."
    "........o####o.."
    ".......o#o###o.."
    "......o#ooo##o.."
    ".....o#ooo#oo..."
    "....o#ooo#o....."
    "...o#ooo#o......"
    "..o#ooo#o......."
    ".o#ooo#o........"
    ".o#oo#o........."
    "o####o.........."
    "o#ooo..........."
    ".o.............."
}

# The hand.
cursor 2001 hotspot 8 8 {
    ".....o##ooo....."
    "...oo#oo###o...."
    "..o###oo#oo#oo.."
    ".o#oo#oo#oo###o."
    ".o#oo#oo#oo#oo#o"
    ".o#oo#oo#oo#oo#o"
    "oo#oo#oo#oo#oo#o"
    "###oo#oo#oo#oo#o"
    "#oo#oooooooooo#o"
    "#ooooooooooooo#o"
    "o#oooooooooooo#o"
    ".o#ooooooooooo#o"
    "..o#ooooooooo#o."
    "..o#ooooooooo#o."
    "...o#ooooooo#o.."
    "...o#########o.."
}

# The magnifier that enlarges; it points with the middle of its glass.
cursor 2002 hotspot 5 5 {
    "..oo###oo......."
    ".o##ooo##o......"
    "o#ooooooo#o....."
    "o#ooo#ooo#o....."
    "#oooo#oooo#o...."
    "#oo#####oo#o...."
    "#oooo#oooo#o...."
    "o#ooo#ooo#o....."
    "o#ooooooo#o....."
    ".o##ooo####o...."
    "..oo###o####o..."
    "....ooo.o####o.."
    ".........o####o."
    "..........o####o"
    "...........o###o"
    "............o#o."
}

# The magnifier that reduces.
cursor 2003 hotspot 5 5 {
    "..oo###oo......."
    ".o##ooo##o......"
    "o#ooooooo#o....."
    "o#ooooooo#o....."
    "#ooooooooo#o...."
    "#oo#####oo#o...."
    "#ooooooooo#o...."
    "o#ooooooo#o....."
    "o#ooooooo#o....."
    ".o##ooo####o...."
    "..oo###o####o..."
    "....ooo.o####o.."
    ".........o####o."
    "..........o####o"
    "...........o###o"
    "............o#o."
}

# The eyedropper that adds a colour.
cursor 2004 hotspot 1 14 {
    "...........o##o."
    ".........oo####o"
    "........o#o####o"
    ".......o######o."
    "........o####o.."
    ".......o#o###o.."
    "......o#ooo##o.."
    ".....o#ooo#oo..."
    "....o#ooo#o....."
    "...o#ooo#o.o...."
    "..o#ooo#o.o#o..."
    ".o#ooo#o.oo#oo.."
    ".o#oo#o.o#####o."
    "o####o...oo#oo.."
    "o#ooo.....o#o..."
    ".o.........o...."
}

# The eyedropper that takes one away.
cursor 2005 hotspot 1 14 {
    "...........o##o."
    ".........oo####o"
    "........o#o####o"
    ".......o######o."
    "........o####o.."
    ".......o#o###o.."
    "......o#ooo##o.."
    ".....o#ooo#oo..."
    "....o#ooo#o....."
    "...o#ooo#o......"
    "..o#ooo#o......."
    ".o#ooo#o.ooooo.."
    ".o#oo#o.o#####o."
    "o####o...ooooo.."
    "o#ooo..........."
    ".o.............."
}

# The watch, while something takes time.
cursor 4 hotspot 7 7 {
    "...o######o....."
    "...o######o....."
    "..o#oooooo#o...."
    ".o#oooo#ooo#o..."
    "o#ooooo#oooo#o.."
    "o#ooooo#oooo#o.."
    "o#ooooo#oooo##o."
    "o#ooooo#oooo##o."
    "o#ooo###oooo##o."
    "o#oooooooooo#o.."
    "o#oooooooooo#o.."
    ".o#oooooooo#o..."
    "..o#oooooo#o...."
    "...o######o....."
    "...o######o....."
    "....oooooo......"
}
