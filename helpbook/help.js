// Shows one topic of the book, and the navigation beside it. The address tells what: api.htm?context=ODBC&topic=userdsn, with
// single=true for the topic alone, and tab=contents, index, search or favorites for the tab in front. Without scripts the page
// is the whole book.
(function () {
    "use strict";

    var kTabs = ["contents", "index", "search", "favorites"];
    var kFavorites = "varnholt-odbc-administrator-help-favorites";
    var kBook = document.title;

    var query = new URLSearchParams(window.location.search);
    var current = null;
    var favorites = [];

    function element(id) {
        return document.getElementById(id);
    }

    function isTopic(id) {
        return element(id) !== null && element(id).tagName === "ARTICLE";
    }

    function titleOf(topic) {
        return element(topic).querySelector("h1").textContent;
    }

    // A list row that shows a section.
    function row(id, title, aside) {
        var item = document.createElement("li");
        var link = document.createElement("a");
        link.href = "#" + id;
        link.textContent = title;
        item.appendChild(link);
        if (aside) {
            var small = document.createElement("small");
            small.textContent = aside;
            item.appendChild(small);
        }
        return item;
    }

    function fill(list, rows) {
        list.textContent = "";
        rows.forEach(function (item) {
            list.appendChild(item);
        });
    }

    // Shows the topic that `id` is, or lies in.
    function show(id) {
        var target = element(id);
        var article = target && target.closest("article");
        if (!article) {
            return;
        }
        current = article.id;
        document.querySelectorAll("article").forEach(function (other) {
            other.classList.toggle("front", other === article);
        });
        document.querySelectorAll("#pane-contents a").forEach(function (link) {
            if (link.getAttribute("href") === "#" + current) {
                link.setAttribute("aria-current", "page");
            } else {
                link.removeAttribute("aria-current");
            }
        });
        document.title = titleOf(current) + " - " + kBook;
        if (window.location.hash) {
            target.scrollIntoView();
        }
        showFavorites();
    }

    function showUnknown(topic) {
        element("asked").textContent = topic;
        element("unknown").hidden = false;
        show("contents");
    }

    function selectTab(name) {
        kTabs.forEach(function (tab) {
            var selected = tab === name;
            element("tab-" + tab).setAttribute("aria-selected", String(selected));
            element("tab-" + tab).tabIndex = selected ? 0 : -1;
            element("pane-" + tab).hidden = !selected;
        });
        if (name === "search" && !document.body.classList.contains("single")) {
            element("words").focus();
        }
    }

    function tabKey(event) {
        var step = { ArrowLeft: kTabs.length - 1, ArrowRight: 1 }[event.key];
        if (step) {
            var next = kTabs[(kTabs.indexOf(event.target.id.slice(4)) + step) % kTabs.length];
            selectTab(next);
            element("tab-" + next).focus();
            event.preventDefault();
        }
    }

    // A text of the page's own, in its language.
    function words(name, subject) {
        return document.body.getAttribute("data-" + name).replace("%1", subject);
    }

    // A text as people type it who search: in small letters, without accents.
    function folded(text) {
        return text.toLowerCase().normalize("NFD").replace(/[\u0300-\u036f]/g, "");
    }

    // The sections with a word that begins with `start`, as a map from their numbers. Languages that write without blanks
    // have it anywhere.
    function sectionsWith(start) {
        var found = {};
        var isAnywhere = /[\u3040-\u30ff\u3400-\u9fff]/.test(start);
        Object.keys(bookIndex.words).forEach(function (word) {
            var place = folded(word).indexOf(start);
            if (place === 0 || (isAnywhere && place > 0)) {
                bookIndex.words[word].split(" ").forEach(function (section) {
                    found[section] = true;
                });
            }
        });
        return found;
    }

    function search() {
        var asked = folded(element("words").value).split(/[^a-z0-9_\u00c0-\u1fff\u2040-\u2fff\u3040-\uffff]+/).filter(Boolean);
        var inTitle = [];
        var inText = [];
        if (asked.length > 0) {
            var hits = asked.map(sectionsWith);
            bookIndex.sections.forEach(function (section, number) {
                var title = folded(section[1]);
                if (hits.every(function (hit) { return hit[number]; })) {
                    var named = asked.some(function (word) { return title.indexOf(word) >= 0; });
                    (named ? inTitle : inText).push(row(section[0], section[1], section[1] === section[2] ? "" : section[2]));
                }
            });
        }
        var results = inTitle.concat(inText);
        fill(element("results"), results);
        element("found").textContent = asked.length === 0 ? "" : results.length === 0 ?
            words("nothing") : words(results.length === 1 ? "place" : "places", results.length);
    }

    function readFavorites() {
        // The browser may keep nothing for pages in files; favorites then last as long as the page.
        try {
            var stored = JSON.parse(window.localStorage.getItem(kFavorites));
            favorites = Array.isArray(stored) ? stored.filter(isTopic) : [];
        } catch (error) {
            favorites = [];
        }
    }

    function changeFavorites(topic) {
        favorites = favorites.indexOf(topic) < 0 ? favorites.concat(topic) :
            favorites.filter(function (other) { return other !== topic; });
        try {
            window.localStorage.setItem(kFavorites, JSON.stringify(favorites));
        } catch (error) {
            // Nothing is lost but the memory of it.
        }
        showFavorites();
    }

    function showFavorites() {
        fill(element("favorites"), favorites.map(function (topic) {
            return row(topic, titleOf(topic));
        }));
        element("no-favorites").hidden = favorites.length > 0;
        element("favorite").textContent = words(favorites.indexOf(current) < 0 ? "add" : "remove", titleOf(current));
    }

    function showWholeBook(event) {
        document.body.classList.remove("single");
        selectTab("contents");
        event.preventDefault();
    }

    function fillIndex() {
        var entries = bookIndex.keywords.slice().sort(function (one, other) {
            return one[0].localeCompare(other[0], document.documentElement.lang);
        });
        fill(element("keywords"), entries.map(function (entry) {
            return row(bookIndex.sections[entry[1]][0], entry[0]);
        }));
    }

    function start() {
        var topic = query.get("topic");
        var context = query.get("context") || "ODBC";
        var tab = query.get("tab");
        document.body.classList.toggle("single", query.get("single") === "true");
        fillIndex();
        readFavorites();
        selectTab(kTabs.indexOf(tab) < 0 ? "contents" : tab);
        kTabs.forEach(function (name) {
            element("tab-" + name).addEventListener("click", function () { selectTab(name); });
            element("tab-" + name).addEventListener("keydown", tabKey);
        });
        element("words").addEventListener("input", search);
        element("favorite").addEventListener("click", function () { changeFavorites(current); });
        element("whole").addEventListener("click", showWholeBook);
        window.addEventListener("hashchange", function () {
            show(window.location.hash.slice(1) || topic || "start");
        });

        if (window.location.hash && element(window.location.hash.slice(1))) {
            show(window.location.hash.slice(1));
        } else if (topic && !(isTopic(topic) && context === "ODBC")) {
            showUnknown(topic);
        } else {
            show(topic || "start");
        }
    }

    start();
}());
