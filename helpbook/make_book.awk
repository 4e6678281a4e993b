# Makes the help book, one page with all topics, and its index.
#
#   awk -v indexFile=index.js -v root=../../ -f make_book.awk odbc.msg vhsetup23.msg vhutl23.msg book.htm topics/*.htm >api.htm
#
# @odbc:NUMBER@ in a topic, or another catalog, becomes the text that people see. book.htm is
# the page around the topics: @contents@ and @topics@ stand for what is made of them, @root@ for the folder of what the books
# of all languages share; its body has words for the turning of topics. A topic is an <article> with an id, its
# name in addresses, and a data-group, under which the contents list it. Its headings h1 and h2 stand on a line each; an h2
# has an id, and both may have a data-index: keywords with ";" between them. A link to an id that is not there, or an id
# that is there twice, ends the run.

function fail(text) {
    print FILENAME ":" FNR ": " text >"/dev/stderr"
    failed = 1
    exit 1
}

function attribute(name, line) {
    return match(line, " " name "=\"[^\"]*\"") ? substr(line, RSTART + length(name) + 3, RLENGTH - length(name) - 4) : ""
}

function plain(line) {
    gsub(/<[^>]*>/, "", line)
    return line
}

function quoted(text) {
    gsub(/&lt;/, "<", text)
    gsub(/&gt;/, ">", text)
    gsub(/&quot;/, "\"", text)
    gsub(/&amp;/, "\\&", text)
    gsub(/\\/, "\\\\", text)
    gsub(/"/, "\\\"", text)
    return "\"" text "\""
}

function readMessage(number, text) {
    number = $1
    text = substr($0, index($0, "\"") + 1)
    sub(/"$/, "", text)
    # Scripts without blanks, whose characters have these three bytes, have none where a line ends, nor behind 、 and 。.
    while (match(text, /[\343-\357][\200-\277][\200-\277]\\n[\343-\357]|\343\200[\201\202]\\n/)) {
        text = substr(text, 1, RSTART + 2) substr(text, RSTART + 5)
    }
    gsub(/\\n/, " ", text)
    gsub(/\\"/, "\"", text)
    gsub(/\\\\/, "\\", text)
    gsub(/&/, "\\&amp;", text)
    gsub(/</, "\\&lt;", text)
    gsub(/>/, "\\&gt;", text)
    gsub(/%[1-9]/, "...", text)
    messages[catalog ":" number] = text
}

function withMessages(line, name) {
    while (match(line, /@[a-z0-9]+:[0-9]+@/)) {
        name = substr(line, RSTART + 1, RLENGTH - 2)
        if (!(name in messages)) {
            fail("no message " name)
        }
        line = substr(line, 1, RSTART - 1) messages[name] substr(line, RSTART + RLENGTH)
    }
    return line
}

function addSection(id, line, keywords, count, i) {
    ++sections
    ids[sections] = id
    titles[sections] = plain(line)
    topicOf[sections] = topics
    count = split(attribute("data-index", line), keywords, /; */)
    for (i = 1; i <= count; ++i) {
        keywordList = keywordList ",\n[" quoted(keywords[i]) "," (sections - 1) "]"
    }
}

function addWords(line, words, count, i) {
    # Quotation marks, apostrophes and blanks beyond ASCII end a word; every byte of a letter beyond ASCII is one of its word.
    gsub(/<[^>]*>|&[a-z]+;|\302.|\342\200.|\343\200./, " ", line)
    line = tolower(line)
    count = split(line, words, /[^a-z0-9_\200-\377]+/)
    for (i = 1; i <= count; ++i) {
        if (words[i] != "" && !((words[i], sections) in seen)) {
            seen[words[i], sections] = 1
            if (!(words[i] in places)) {
                allWords[++wordCount] = words[i]
            }
            places[words[i]] = places[words[i]] " " (sections - 1)
        }
    }
}

function checkNames(line, rest, name) {
    name = attribute("id", line)
    if (name != "" && name in known) {
        fail("the id " name " is there twice")
    }
    known[name] = 1
    for (rest = line; match(rest, /href="#[^"]*"/); rest = substr(rest, RSTART + RLENGTH)) {
        links[substr(rest, RSTART + 7, RLENGTH - 8)] = FILENAME ":" FNR
    }
}

function link(topic) {
    return "<a href=\"#" topicIds[topic] "\">" topicTitles[topic] "</a>"
}

function contents(result, i) {
    for (i = 1; i <= topics; ++i) {
        if (i == 1 || groups[i] != groups[i - 1]) {
            result = result (i > 1 ? "</ul>\n" : "") "<h2>" groups[i] "</h2>\n<ul>\n"
        }
        result = result "<li>" link(i) "</li>\n"
    }
    return result "</ul>"
}

function turning(topic) {
    return "<p class=\"turn\">" (topic > 1 ? "<span>" previousWord " " link(topic - 1) "</span> " : "") \
        (topic < topics ? "<span>" nextWord " " link(topic + 1) "</span>" : "") "</p>\n"
}

FNR == 1 { catalog = FILENAME; sub(/.*\//, "", catalog); isTemplate = catalog == "book.htm"; isCatalog = sub(/\.msg$/, "", catalog) }
isCatalog && /^[0-9]+ "/ { readMessage() }
isCatalog { next }
isTemplate {
    gsub(/@root@/, root)
    previousWord = previousWord attribute("data-previous", $0)
    nextWord = nextWord attribute("data-next", $0)
    template[++templateLines] = $0
    next
}

{ $0 = withMessages($0); checkNames($0) }
/^<article / {
    topicIds[++topics] = attribute("id", $0)
    groups[topics] = attribute("data-group", $0)
}
/^<h1/ {
    topicTitles[topics] = plain($0)
    addSection(topicIds[topics], $0)
}
/^<h2/ {
    if (attribute("id", $0) == "") {
        fail("a heading without an id")
    }
    addSection(attribute("id", $0), $0)
}
{
    addWords($0)
    gsub(/ src="/, "&../../")
    sub(/ data-index="[^"]*"/, "")
    sub(/ data-group="[^"]*"/, "")
    texts[topics] = texts[topics] $0 "\n"
}

END {
    if (failed) {
        exit 1
    }
    for (name in links) {
        if (!(name in known) && name != "contents") {
            print links[name] ": no " name " to link to" >"/dev/stderr"
            exit 1
        }
    }
    for (i = 1; i <= topics; ++i) {
        sub(/<\/article>\n$/, "", texts[i])
    }
    for (line = 1; line <= templateLines; ++line) {
        if (template[line] == "@contents@") {
            print contents()
        } else if (template[line] == "@topics@") {
            for (i = 1; i <= topics; ++i) {
                printf "%s%s</article>\n", texts[i], turning(i)
            }
        } else {
            print template[line]
        }
    }

    # Sections: id, title, title of the topic. Keywords: text, section. Words: the sections that they stand in.
    print "var bookIndex = {\nsections: [" >indexFile
    for (i = 1; i <= sections; ++i) {
        print "[" quoted(ids[i]) "," quoted(titles[i]) "," quoted(topicTitles[topicOf[i]]) "]" (i < sections ? "," : "") >indexFile
    }
    print "],\nkeywords: [" substr(keywordList, 2) "\n],\nwords: {" >indexFile
    for (i = 1; i <= wordCount; ++i) {
        print "\"" allWords[i] "\":\"" substr(places[allWords[i]], 2) "\"" (i < wordCount ? "," : "") >indexFile
    }
    print "}\n};" >indexFile
}
