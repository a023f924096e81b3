"""Fixtures that these tests share with those of the library."""

import pytest
from forms import awaited, blocking


@pytest.fixture(params=[blocking, awaited])
def call(request):
    """Runs an operation in one form; each test with it runs in both."""
    return request.param
