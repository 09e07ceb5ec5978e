// Rendering of the output tree (text, JSON, HTML).
