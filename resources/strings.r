# Texts that are shown outside the dialogs' own items.

strings 16002 {
    "GIF89a"                                                      # 1: the format's name
    ".gif"                                                        # 2: suffix of saved files
    "Save the picture as:"                                        # 3: the save dialog
    "Choose the colour of transparent pixels:"                    # 4: the colour picker
    "The palette cannot be read from this file."                  # 5: a palette does not load
    "The palette's colours are not RGB, so it cannot be used."    # 6: and this is why
}
