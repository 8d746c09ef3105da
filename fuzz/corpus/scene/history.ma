createNode transform -n "a";
createNode mesh -n "aShape" -p "a";
createNode polyCube -n "c";
	setAttr ".w" 2;
select -ne "a";
	setAttr ".s" -type "double3" 2 2 2;
connectAttr "c.out" "aShape.i";
// end
