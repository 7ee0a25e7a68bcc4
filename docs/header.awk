# Doxygen's view of a header.  A banner opens a section; indented lines of a comment are formulas and tables, kept as they
# are; a declaration right below another shares its comment; a field without a comment is explained by its record's.
/^\/\* ---- / {
    title = $0; closed = /\*\/$/
    sub(/^\/\* ---- /, "", title); sub(/ -+( \*\/)?$/, "", title)
    $0 = (section ? "/** @} */ " : "") "/** @name " title (closed ? " */ /** @{ */" : "")
    section = 1; comment = opening = !closed
    print; next
}
/^\/\*\*/ { comment = 1 }
/@defgroup/ { group = $3 }
comment && fixed && /^ \*( ?[^ ]|$)/ { fixed = 0; sub(/^ \*/, "@endverbatim") }
comment && fixed { sub(/^ \*/, "") }
comment && !fixed && /^ \*   / { fixed = 1; print "@verbatim"; sub(/^ \*/, "") }
comment && !fixed { gsub(/ \.\. /, " ..\\&nbsp;") }  # a dot and a blank end the summary
comment && /\*\/$/ {
    if (fixed) sub(/ *\*\/$/, " @endverbatim */")
    if (opening) $0 = $0 " /** @{ */"
    comment = fixed = opening = 0
}
/^#ifdef __cplusplus/ && ++linkage == 2 && group { print (section ? "/** @} */ " : "") "/** @} */" }
/^$/ && linkage == 1 && group && !joined { joined = 1; print "/** @addtogroup " group " */ /** @{ */"; next }
/^MENSURA_EXPORT/ && shared { print "/** @copydoc " shared " */ " $0; next }
/^MENSURA_EXPORT/ { match($0, /[A-Za-z_0-9]+\(/); shared = substr($0, RSTART, RLENGTH - 1) }
/^$/ { shared = "" }
comment == 0 && /^    [A-Za-z].*;$/ { $0 = $0 " /**< see the record */" }
{ print }
