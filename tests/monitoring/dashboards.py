"""The dashboards of monitoring/grafana: their panels and queries, as Grafana reads them."""

import glob
import json
import os
import re


class Dashboard:
    def __init__(self, path):
        with open(path, encoding="utf-8") as file:
            self.content = json.load(file)
        self.name = os.path.basename(path)
        self.variables = self.content["templating"]["list"]

    @property
    def panels(self):
        return self.content["panels"]

    def queries(self):
        """Of each panel: its title, the expression, and whether it is asked for one moment instead of a time."""
        for panel in self.panels:
            for target in panel["targets"]:
                yield panel["title"], target["expr"], target["instant"]

    def variable_queries(self):
        """Of each variable that is asked of Prometheus: its name, the expression of series, and the label."""
        for variable in self.variables:
            if variable["type"] == "query":
                series, label = re.fullmatch(r"label_values\((.*), (\w+)\)", variable["query"]["query"]).groups()
                yield variable["name"], series, label


def all_dashboards(repository):
    return [Dashboard(path) for path in sorted(glob.glob(f"{repository}/monitoring/grafana/*.json"))]


def replaced(expression, values):
    """The expression with the variables' values, by their names without "$"."""
    return re.sub(r"\$(\w+)", lambda match: values[match[1]], expression)
