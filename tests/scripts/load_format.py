"""Configurations in ConfD's XML load format, as the checks read them: without namespaces.

No two modules have elements of one name in one place.
"""

import xml.etree.ElementTree as ElementTree


def parsed(file: str) -> ElementTree.Element:
    root = ElementTree.parse(file).getroot()
    for element in root.iter():
        element.tag = element.tag.rsplit("}", 1)[-1]
    return root
