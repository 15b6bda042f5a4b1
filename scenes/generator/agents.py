"""The agents of a scene's bodies, as they stand in its document."""

# A body that stays where it is, and one that a person can play with.
FIXED = ("GeometryComponent",)
MOVABLE = ("GeometryComponent", "HighlightComponent", "DragComponent", "PushComponent", "FlashComponent")


def agent(name, classes, more=""):
    """An agent with a component of each class, each under the name of its class, and more lines behind them."""
    components = "".join(f'    <Component class="{each}" name="{each}"/>\n' for each in classes)
    return f'  <AgentNode name="{name}">\n{components}{more}  </AgentNode>\n'
