//Maya ASCII 2008 scene
requires maya "2008";
createNode transform -n "thing";
	setAttr ".tx" 4.5;
currentUnit -l centimeter -a degree -t film;
setAttr ".ty" 3;
setAttr "thing.tz" 2;
setAttr "other.tz" 1;
addAttr -ln "hair" -at "double";
// End of no_node.ma
