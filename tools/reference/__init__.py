"""The pages of the reference, made of what the built module says of itself. Each part gives its pages as texts by name;
site_tree.py writes them."""
