# Makes a message catalog of a language that does not exist: English texts that are two fifths longer, with accents.
# Letters for Alt stay, since each is still one of its label.
/^[0-9]+ ".."$/ || /^730[01] / || !/^[0-9]+ "/ { print; next }
{
    text = substr($0, 1, length($0) - 1)
    dots = sub(/\.\.\.$/, "", text) ? "..." : ""
    letters = int((length(text) - index(text, "\"")) * 2 / 5)
    filler = ""
    for (i = 1; i <= letters && length(text) + length(filler) < 500; ++i) {
        filler = filler (i % 6 == 0 ? " " : "\303\251")
    }
    print text filler dots "\""
}
