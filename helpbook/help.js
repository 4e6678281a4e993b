// Shows the topic that the address asks for: api.htm?context=ODBC&topic=userdsn&single=true
(function () {
    "use strict";
    var query = new URLSearchParams(window.location.search);
    var topic = query.get("topic");
    var links = Array.prototype.slice.call(document.querySelectorAll("#contents a"));
    var link = links.find(function (candidate) {
        return candidate.getAttribute("href").endsWith("/" + topic + ".htm");
    });
    if (link) {
        document.getElementById("topic").src = link.getAttribute("href");
        document.title = link.textContent + " - " + document.title;
        document.body.classList.toggle("single", query.get("single") === "true");
    } else if (topic) {
        document.getElementById("asked").textContent = topic;
        document.getElementById("unknown").hidden = false;
    }
}());
