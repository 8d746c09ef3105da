//Maya ASCII 2008 scene
createNode transform -n "x";
setAttr ".tx
