"""The two forms of an operation."""

import asyncio


def blocking(product, name, *args, **kwargs):
    return getattr(product, name)(*args, **kwargs)


def awaited(product, name, *args, **kwargs):
    return asyncio.run(getattr(product, name + "_async")(*args, **kwargs))
