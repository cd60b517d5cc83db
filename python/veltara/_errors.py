"""The engine's numbered errors as a Python exception."""


class EngineError(RuntimeError):
    """A failure the engine reports by number: `.number` (5, 6, 7, 9, 11, 13, 91) and
    `.message`, the engine's text for it ("Division by zero")."""

    def __init__(self, number, message):
        super().__init__(f"{message} (error {number})")
        self.number = number
        self.message = message
