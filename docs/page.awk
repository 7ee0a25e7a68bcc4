# Doxygen's view of a Markdown page: it does not see ** before a ` and a ' inside of `...`, and knows pages, but not their
# headings.
/^```/ { code = !code }
/^$/ { bold = 0 }
!code {
    while (sub(/\*\*/, bold ? "</b>" : "<b>")) bold = !bold
    gsub(/\.md#[-a-z0-9]*/, ".md")
    count = split($0, part, "`"); $0 = part[1]
    for (i = 2; i <= count; ++i) { tick = part[i - i % 2] ~ /'/ ? "``" : "`"; $0 = $0 tick part[i] }
}
{ print }
