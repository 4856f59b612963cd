"""Writes a configuration anew with index 1 in every row key that names an entity or a list of rules: a short streaming script with lxml."""
import sys

from lxml import etree

KEYS = ("}bgpRmEntIndex", "}bgpNmEntIndex", "}aallPreAccessListListIndex")
ROW = 4  # depth of a table's rows, below wrapper, module and table


def main(source, target):
    with etree.xmlfile(target, encoding="utf-8") as out:
        around = []
        depth = 0
        for event, element in etree.iterparse(source, events=("start", "end")):
            if event == "start":
                depth += 1
                if depth < ROW:
                    around.append(out.element(element.tag, nsmap=element.nsmap))
                    around[-1].__enter__()
                continue
            if element.tag.endswith(KEYS):
                element.text = "1"
            if depth == ROW:
                element.tail = "\n"
                out.write(element)
            if depth < ROW:
                if element.text and element.text.strip():
                    out.write(element.text)
                around.pop().__exit__(None, None, None)
            if depth <= ROW:  # the parser keeps nothing of what is written
                element.clear()
                while element.getprevious() is not None:
                    del element.getparent()[0]
            depth -= 1


main(*sys.argv[1:])
