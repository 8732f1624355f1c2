# What the report's page is put together from, in this order: the script's files share one scope.
set(RUVO_PAGE_STYLES theme.css layout.css timeline.css events.css panels.css print.css)
set(RUVO_PAGE_SCRIPTS basics.js data.js state.js time_axis.js lanes.js overview.js timeline.js events.js csv.js
    details.js panels.js main.js)
