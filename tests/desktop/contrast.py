"""How well a colour is seen on another one, as the guidelines for accessible content define it."""


def luminance(colour):
    red, green, blue = ((part / 12.92 if part <= 0.04045 else ((part + 0.055) / 1.055) ** 2.4)
                        for part in (channel / 255 for channel in colour))
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue


def contrast(one, other):
    darker, lighter = sorted((luminance(one), luminance(other)))
    return (lighter + 0.05) / (darker + 0.05)
