// Shows the pages of ZY_SEARCH (search-index.js) that hold every word of ?q=.
// Words are runs of letters and digits, as the index was made.
(function () {
    'use strict';
    var query = new URLSearchParams(window.location.search).get('q') || '';
    var field = document.getElementById('q');
    var status = document.getElementById('status');
    var results = document.getElementById('results');
    field.value = query;
    var words = query.toLowerCase().split(/[^\p{L}\p{N}]+/u).filter(function (w) {
        return w.length > 0;
    });
    results.textContent = '';
    if (words.length === 0) {
        status.textContent = '';
        return;
    }
    var hits = ZY_SEARCH.filter(function (entry) {
        var text = ' ' + entry[2];
        return words.every(function (word) { return text.indexOf(' ' + word) >= 0; });
    });
    hits.forEach(function (entry) {
        var item = document.createElement('li');
        var link = document.createElement('a');
        link.href = entry[0];
        link.textContent = entry[1];
        item.appendChild(link);
        results.appendChild(item);
    });
    status.textContent = hits.length > 0 ? status.dataset.found + ': ' + hits.length
                                       : status.dataset.none;
}());
