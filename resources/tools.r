# Pictures of the tool buttons, each followed by the selected button's. art/draw.sh draws them.

picture 500 "art/hand.png" size 24 24
picture 501 "art/hand-selected.png" size 24 24

picture 502 "art/eyedropper.png" size 24 24
picture 503 "art/eyedropper-selected.png" size 24 24

picture 504 "art/magnifier.png" size 24 24
picture 505 "art/magnifier-selected.png" size 24 24

picture 506 "art/eyedropper-plus.png" size 24 24
picture 507 "art/eyedropper-plus-selected.png" size 24 24
picture 508 "art/eyedropper-minus.png" size 24 24
picture 509 "art/eyedropper-minus-selected.png" size 24 24

picture 510 "art/magnifier-plus.png" size 24 24
picture 511 "art/magnifier-plus-selected.png" size 24 24
picture 512 "art/magnifier-minus.png" size 24 24
picture 513 "art/magnifier-minus-selected.png" size 24 24

# Nothing to pick with: transparency comes from a channel.
picture 514 "art/eyedropper-dimmed.png" size 24 24
picture 515 "art/eyedropper-dimmed-selected.png" size 24 24
