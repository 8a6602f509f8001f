# The about box.

dialog 16010 "About GIF89a Export" size 340 150 {
    1  button  "OK"                                            at 240 114  size 80 20
    2  static  "GIF89a Export"                                 at 20 16    size 300 16
    3  static  "Version ${VERSION}"                            at 20 36    size 300 16
    4  static  "Saves pictures of up to 256 colours as GIF."   at 20 60    size 300 16
    5  static  "Thanks to everyone who still counts colours."  at 20 84    size 300 16
}
