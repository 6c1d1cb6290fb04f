# Makes a table of the manual page's advice: each text under DIAGNOSTICS with its cause, the state
# of the adapters and the next step.
#
#   awk -f report/page_advice.awk docs/zentrix.8 >page_advice.inc

# A line of the page as it reads, without its macro.
function readable(line, tail) {
    gsub(/\\&|\\/, "", line)
    if (line ~ /^\.[A-Z][a-z] .* [.,;:]$/) {
        tail = substr(line, length(line))
        sub(/ .$/, "", line)
    }
    if (sub(/^\.Dq "?/, "\"", line) && line !~ /."$/) {
        line = line "\""
    }
    sub(/^\.Fl /, "-", line)
    sub(/^\.[A-Z][a-z] /, "", line)
    return line tail
}

function quoted(text) {
    gsub(/^ +| +$/, "", text)
    gsub(/"/, "\\\"", text)
    return "\"" text "\""
}

# Where a text is shown matters to those who look for it there.
function finish(at, i) {
    if (prose == "") {
        return
    }
    sub(/^(Log only|Log and console|Console only|On standard error only|The first on)[^.]*\. /, "", prose)
    at = index(prose, "Next: ")
    following = at ? substr(prose, at + 6) : ""
    prose = at ? substr(prose, 1, at - 1) : prose
    at = index(prose, "Adapters: ")
    state = at ? substr(prose, at + 10) : ""
    prose = at ? substr(prose, 1, at - 1) : prose
    for (i = 0; i < count; i++) {
        print "{" quoted(texts[i]) ", " quoted(prose) ", " quoted(state) ", " quoted(following) "},"
    }
    count = 0
    prose = ""
}

/^\.Sh DIAGNOSTICS/ { inside = 1 }
/^\.Ss Texts of other programs/ { exit }
inside && /^\.It Li / {
    finish()
    sub(/^\.It Li "?/, "")
    sub(/"$/, "")
    gsub(/""/, "\"")
    texts[count++] = $0
    next
}
inside && /^\.El/ { finish() }
count && !/^\.(Bl|El|Ss)/ { prose = prose readable($0) " " }
END { finish() }
