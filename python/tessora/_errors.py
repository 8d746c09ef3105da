"""The package's exception."""


class Error(ValueError):
    """An input that cannot be unwrapped, or work that was stopped.

    status: what is wrong, one of "invalid_argument", "index_out_of_range", "not_finite",
        "does_not_fit", "chart_limit", "cancelled", "kept_charts_collide", "kept_chart_outside".
    element: the position in the array that the message names, the number of charts for "does_not_fit"
        and "chart_limit", or a face for the last two; None if there is none.
    """

    def __init__(self, text, status="invalid_argument", element=None):
        super().__init__(text)
        self.status = status
        self.element = element

    def __reduce__(self):
        return Error, (self.args[0], self.status, self.element)
